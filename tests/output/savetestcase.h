// SPDX-License-Identifier: MIT
#pragma once

// The setting of the "Save Image" and output folder tests: sample photos of
// every saved format, a recording opener first on PATH, an empty home holding
// the output folder that start-up makes, and the ways a user makes a photo
// current, clicks the preview and presses "Save Image".

#include "state/globals.h"
#include "keying/keymask.h"
#include "mainwindow/dialog.h"
#include "tests/fixture/windowfixture.h"
#include "tests/support/foldertree.h"
#include "tests/support/recordingopener.h"
#include "tests/support/testsupport.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QImageReader>
#include <QImageWriter>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <cstdlib>
#include <memory>

namespace savetest {

const QString kWarningText = QStringLiteral(
    "WARNING: The output directory already exists.\n"
    "Your files WILL be overwritten without further warning.\n"
    "Press OK to continue using the same directory.\n"
    "Press Cancel to abort and change the directory");
const QString kCreateAnyway = QStringLiteral("Create Anyway, I know what I'm doing");

// A point on the backdrop and one on the subject's body, in the preview
// view's viewport; the view stands for the whole photo whatever its shape.
const QPoint kBackdropClick(20, 20);
const QPoint kSubjectClick(210, 300);

// Closes any modal window the test did not expect, so that a failing test
// cannot hang on it.
inline void dismiss(QWidget* modal)
{
    if (auto* dialog = qobject_cast<QDialog*>(modal))
        dialog->reject();
    else
        modal->close();
}

inline QAbstractButton* buttonWithText(QMessageBox* box, const QString& text)
{
    const QList<QAbstractButton*> buttons = box->buttons();
    for (QAbstractButton* b : buttons) {
        if (b->text() == text)
            return b;
    }
    return nullptr;
}

// Presses the button of `box` that reads `text`; closes the box when none does.
inline void pressButton(QMessageBox* box, const QString& text)
{
    if (QAbstractButton* button = buttonWithText(box, text))
        QTest::mouseClick(button, Qt::LeftButton);
    else
        dismiss(box);
}

// Chooses `folder` in the folder picker, as its "Choose" button does.
inline void chooseFolder(QFileDialog* picker, const QString& folder)
{
    picker->setDirectory(folder);
    static_cast<QDialog*>(picker)->accept();
}

inline QImage asRgb32(const QImage& image) { return image.convertToFormat(QImage::Format_RGB32); }

} // namespace savetest

// The base of the "Save Image" and output folder test cases: the samples
// and the recording opener for the run, and for each test an empty home
// holding the output folder and the window built on the samples, shown.
class SaveTestCase : public QObject
{
    Q_OBJECT

protected:
    Dialog& window() { return *m_window->dialog; }

    QTemporaryDir m_samples;
    testsupport::RecordingOpener m_opener;
    QString m_home;
    QString m_output;

    QString pic(const QString& name) const { return m_samples.path() + QStringLiteral("/pics/") + name; }

    // Makes `path` the shown foreground the way choosing it in FOREGROUNDS
    // does: current row, current path, reloaded and turned, key point cleared.
    void choose(Dialog& d, int row, const QString& path)
    {
        const widgettest::WindowWidgets ui(d);
        while (ui->listWidget->count() <= row)
            new QListWidgetItem(path, ui->listWidget);
        ui->listWidget->clearSelection();
        ui->listWidget->setCurrentRow(row);
        MyGlobal::CurSelection = path;
        d.Rotate();
        MyGlobal::xyClicked = QPoint(0, 0);
        d.UpdateScene();
    }

    // A press on the preview, as the user makes it.
    void clickPreview(Dialog& d, QPoint at)
    {
        QTest::mouseClick(widgettest::WindowWidgets(d).graphicsView->viewport(), Qt::LeftButton, {}, at);
    }

    // The foreground file keyed against the window's background for a click
    // at `at`, worked out apart from the window.
    QImage keyedByHand(Dialog& d, const QString& path, QPoint at)
    {
        QImage photo(path);
        const QWidget* view = widgettest::WindowWidgets(d).graphicsView;
        const QRgb key = photo.pixel(photo.width() * at.x() / view->width(), photo.height() * at.y() / view->height());
        keying::maskOut(photo, DialogTestAccess::background(d), key);
        return photo;
    }

    void pressSaveImage(Dialog& d) { QTest::mouseClick(widgettest::WindowWidgets(d).Run, Qt::LeftButton); }

    // A button named ChooseOutDir binds to the window's slot by name.
    QPushButton* addChooseOutDirButton(Dialog& d)
    {
        auto* button = new QPushButton(QStringLiteral("Output folder"), &d);
        button->setObjectName(QStringLiteral("ChooseOutDir"));
        button->setGeometry(700, 470, 100, 30);
        button->show();
        QMetaObject::connectSlotsByName(&d);
        return button;
    }

    // Home contents that Qt's own file dialog keeps between runs.
    static QStringList withoutFileDialogState(QStringList changed)
    {
        changed.removeIf([](const QString& p) { return p.startsWith(QStringLiteral(".config")); });
        return changed;
    }

private slots:
    void initTestCase()
    {
        m_home = QString::fromLocal8Bit(qgetenv("HOME"));
        QVERIFY(!m_home.isEmpty());
        QVERIFY(m_home.startsWith(QDir::tempPath()));
        QCOMPARE(QDir::homePath(), m_home);
        QVERIFY(m_samples.isValid());
        QVERIFY(testsupport::makeSampleFolder(m_samples.path()));
        const QImage shot = testsupport::studioShot(160, 120, QColor(40, 180, 60), 21);
        for (const char* name : {"a b.JPG", "key.jpg", "key2.JPG", "key.tif", "key.tiff", "key.bmp", "key.png",
                                 "key2.PNG", "blue.png"}) {
            const QString file = QString::fromLatin1(name);
            const QImage image = file == QStringLiteral("blue.png")
                                     ? testsupport::studioShot(200, 150, QColor(40, 70, 200), 22)
                                     : shot;
            QVERIFY2(testsupport::writeImage(image, pic(file)), name);
        }
        QVERIFY(m_opener.isValid());
        m_opener.putFirstOnPath();
        QVERIFY(QImageWriter::supportedImageFormats().contains("tiff"));
    }

    void init()
    {
        // Start from an empty home holding the output folder that start-up makes.
        m_output = testsupport::emptyHomeWithOutputFolder(m_home);
        QVERIFY(!m_output.isEmpty());
        MyGlobal::appDir = m_samples.path();
        MyGlobal::outputDir = m_output;
        MyGlobal::xyClicked = QPoint(0, 0);
        UserSettings::m_size = QSize(320, 240);
        m_opener.forgetCalls();
        m_window = std::make_unique<widgettest::Window>(widgettest::WindowSetup::onTheGlobalsAsSet());
        QVERIFY(m_window->ok());
    }

    void cleanup() { m_window.reset(); }

private:
    std::unique_ptr<widgettest::Window> m_window;
};
