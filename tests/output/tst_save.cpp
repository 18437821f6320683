// SPDX-License-Identifier: MIT
// "Save Image" and the output folder choice, driven on the real window.
#include "state/globals.h"
#include "keying/keymask.h"
#include "mainwindow/dialog.h"
#include "tests/output/outputtestsupport.h"
#include "tests/support/testsupport.h"
#include "ui_dialog.h"

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

using outputtest::changedEntries;
using outputtest::listTree;
using outputtest::ModalAnswerer;

namespace {

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
void dismiss(QWidget* modal)
{
    if (auto* dialog = qobject_cast<QDialog*>(modal))
        dialog->reject();
    else
        modal->close();
}

QAbstractButton* buttonWithText(QMessageBox* box, const QString& text)
{
    const QList<QAbstractButton*> buttons = box->buttons();
    for (QAbstractButton* b : buttons) {
        if (b->text() == text)
            return b;
    }
    return nullptr;
}

QImage asRgb32(const QImage& image) { return image.convertToFormat(QImage::Format_RGB32); }

} // namespace

class SaveTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_samples;
    outputtest::RecordingOpener m_opener;
    QString m_home;
    QString m_output;

    QString pic(const QString& name) const { return m_samples.path() + QStringLiteral("/pics/") + name; }

    // Makes `path` the shown foreground the way choosing it in FOREGROUNDS
    // does: current row, current path, reloaded and turned, key point cleared.
    void choose(Dialog& d, int row, const QString& path)
    {
        Ui_Dialog* ui = DialogTestAccess::ui(d);
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
        QTest::mouseClick(DialogTestAccess::ui(d)->graphicsView->viewport(), Qt::LeftButton, {}, at);
    }

    // The foreground file keyed against the window's background for a click
    // at `at`, worked out apart from the window.
    QImage keyedByHand(Dialog& d, const QString& path, QPoint at)
    {
        QImage photo(path);
        const QWidget* view = DialogTestAccess::ui(d)->graphicsView;
        const QRgb key = photo.pixel(photo.width() * at.x() / view->width(), photo.height() * at.y() / view->height());
        keying::maskOut(photo, DialogTestAccess::background(d), key);
        return photo;
    }

    void pressSaveImage(Dialog& d) { QTest::mouseClick(DialogTestAccess::ui(d)->Run, Qt::LeftButton); }

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
        QDir home(m_home);
        const QStringList entries = home.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        for (const QString& e : entries) {
            QFileInfo info(home.filePath(e));
            if (info.isDir())
                QDir(info.filePath()).removeRecursively();
            else
                QFile::remove(info.filePath());
        }
        m_output = m_home + QStringLiteral("/Documents/Plendra");
        QVERIFY(QDir().mkpath(m_output));
        MyGlobal::appDir = m_samples.path();
        MyGlobal::outputDir = m_output;
        MyGlobal::xyClicked = QPoint(0, 0);
        UserSettings::m_size = QSize(320, 240);
        m_opener.forgetCalls();
    }

    // With an empty FOREGROUNDS list, pressing "Save Image" shows the
    // add-files dialog and writes nothing.
    void emptyListAsksForPhotosAndWritesNothing()
    {
        Dialog d;
        Ui_Dialog* ui = DialogTestAccess::ui(d);
        ui->listWidget->clear();
        ui->Run->setEnabled(false); // must stay as it is: this path leaves the button alone
        QSignalSpy progress(&d, &Dialog::newProgress);
        const auto before = listTree(m_home);

        QString caption;
        ModalAnswerer answerer([&](QWidget* modal) {
            if (auto* files = qobject_cast<QFileDialog*>(modal))
                caption = files->windowTitle();
            dismiss(modal);
        });
        QVERIFY(QMetaObject::invokeMethod(&d, "Run"));
        QTest::qWait(300); // room for a dialog that was not shown from inside Run

        QCOMPARE(progress.count(), 1);
        QCOMPARE(progress.at(0).at(0).toInt(), 1);
        QVERIFY(!ui->Run->isEnabled());
        QVERIFY(m_opener.calls().isEmpty());
        QVERIFY(QDir(m_output).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
        QCOMPARE(withoutFileDialogState(changedEntries(before, listTree(m_home))), QStringList());

        QCOMPARE(answerer.seen.size(), 1);
        QCOMPARE(answerer.seen.at(0).className, QStringLiteral("QFileDialog"));
        QCOMPARE(caption, QStringLiteral("Select Files for Chroma-Keying"));
    }

    // The composite of /pics/a b.JPG is written as "a b.JPG" in the output
    // folder, as a JPEG, and the opener is run on the folder and then on the
    // file, the latter split at the blank.
    void savesUnderForegroundNameAndOpensFolderThenFile()
    {
        Dialog d;
        d.show();
        QVERIFY(QTest::qWaitForWindowExposed(&d));
        choose(d, 2, pic(QStringLiteral("a b.JPG")));
        clickPreview(d, kBackdropClick);
        const QImage composite = DialogTestAccess::preview(d).toImage();
        const auto before = listTree(m_home);

        pressSaveImage(d);

        const QString target = m_output + QStringLiteral("/a b.JPG");
        QCOMPARE(changedEntries(before, listTree(m_home)), QStringList{QStringLiteral("Documents/Plendra/a b.JPG")});
        QImageReader reader(target);
        QCOMPARE(reader.format(), QByteArray("jpeg"));
        const QImage saved = reader.read();
        QVERIFY(!saved.isNull());
        QCOMPARE(saved.size(), composite.size());
        QVERIFY2(testsupport::meanDifference(saved, composite) < 3.0, "the saved file is not the composite");

        const QList<QStringList> expected{{m_output}, {m_output + QStringLiteral("/a"), QStringLiteral("b.JPG")}};
        QCOMPARE(m_opener.calls(), expected);
    }

    // Whatever the foreground's suffix, the file is written in that format.
    void savedFileKeepsForegroundFormat_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("format");
        QTest::addColumn<bool>("lossless");
        QTest::newRow("jpg") << QStringLiteral("key.jpg") << QByteArray("jpeg") << false;
        QTest::newRow("JPG") << QStringLiteral("key2.JPG") << QByteArray("jpeg") << false;
        QTest::newRow("tif") << QStringLiteral("key.tif") << QByteArray("tiff") << true;
        QTest::newRow("tiff") << QStringLiteral("key.tiff") << QByteArray("tiff") << true;
        QTest::newRow("bmp") << QStringLiteral("key.bmp") << QByteArray("bmp") << true;
        QTest::newRow("png") << QStringLiteral("key.png") << QByteArray("png") << true;
        QTest::newRow("PNG") << QStringLiteral("key2.PNG") << QByteArray("png") << true;
    }

    void savedFileKeepsForegroundFormat()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, format);
        QFETCH(bool, lossless);

        Dialog d;
        d.show();
        QVERIFY(QTest::qWaitForWindowExposed(&d));
        choose(d, 0, pic(name));
        clickPreview(d, kBackdropClick);
        const QImage composite = DialogTestAccess::preview(d).toImage();
        pressSaveImage(d);

        QImageReader reader(m_output + QLatin1Char('/') + name);
        QCOMPARE(reader.format(), format);
        const QImage saved = reader.read();
        QVERIFY2(!saved.isNull(), qPrintable(reader.errorString()));
        QCOMPARE(saved.size(), QSize(160, 120));
        if (lossless)
            QCOMPARE(asRgb32(saved), asRgb32(composite));
        else
            QVERIFY(testsupport::meanDifference(saved, composite) < 3.0);
    }

    // For a lossless foreground the file holds exactly the keyed image: the
    // backdrop replaced by the background, the subject kept.
    void savedPngIsTheKeyedImagePixelForPixel()
    {
        Dialog d;
        d.show();
        QVERIFY(QTest::qWaitForWindowExposed(&d));
        const QString path = pic(QStringLiteral("key.png"));
        choose(d, 0, path);
        clickPreview(d, kBackdropClick);
        const QImage expected = keyedByHand(d, path, kBackdropClick);
        QVERIFY(asRgb32(expected) != asRgb32(QImage(path))); // the click did key something

        pressSaveImage(d);

        const QImage saved(m_output + QStringLiteral("/key.png"));
        QVERIFY(!saved.isNull());
        QCOMPARE(asRgb32(saved), asRgb32(expected));
        // Backdrop corner from the background, subject's body from the photo.
        QCOMPARE(saved.pixel(2, 2), DialogTestAccess::background(d).pixel(2, 2) | 0xff000000u);
        QCOMPARE(saved.pixel(80, 100), QImage(path).pixel(80, 100));
    }

    // Saving twice from the same foreground overwrites the first file
    // without a question.
    void savingTwiceOverwritesWithoutQuestion()
    {
        Dialog d;
        d.show();
        QVERIFY(QTest::qWaitForWindowExposed(&d));
        ModalAnswerer answerer(dismiss);
        const QString path = pic(QStringLiteral("key.png"));
        choose(d, 0, path);
        clickPreview(d, kBackdropClick);
        pressSaveImage(d);
        const QString target = m_output + QStringLiteral("/key.png");
        const QImage first(target);
        QCOMPARE(asRgb32(first), asRgb32(keyedByHand(d, path, kBackdropClick)));

        // A click on the subject keys nothing: the second composite is the
        // photo itself, unlike the first.
        clickPreview(d, kSubjectClick);
        pressSaveImage(d);
        const QImage second(target);
        QCOMPARE(asRgb32(second), asRgb32(QImage(path)));
        QVERIFY(asRgb32(second) != asRgb32(first));

        QVERIFY(answerer.seen.isEmpty());
        QCOMPARE(QDir(m_output).entryList(QDir::Files), QStringList{QStringLiteral("key.png")});
        QCOMPARE(m_opener.calls().size(), 4);
    }

    // After a save the first row of FOREGROUNDS is current and "Save Image"
    // is enabled; the shown photo and the preview stay as they were.
    void afterSaveFirstRowIsCurrentAndRunEnabled()
    {
        Dialog d;
        d.show();
        QVERIFY(QTest::qWaitForWindowExposed(&d));
        Ui_Dialog* ui = DialogTestAccess::ui(d);
        const QString second = m_samples.path() + QStringLiteral("/blue1.JPG");
        QCOMPARE(testsupport::itemTexts(ui->listWidget).value(1), second);
        choose(d, 1, second);
        clickPreview(d, kBackdropClick);
        const QImage composite = DialogTestAccess::preview(d).toImage();
        const QImage shown = testsupport::shownPixmap(DialogTestAccess::scene(d)).toImage();
        QCOMPARE(ui->listWidget->currentRow(), 1);
        ui->Run->setEnabled(false);
        qsizetype mostSelected = 0;
        connect(ui->listWidget, &QListWidget::itemSelectionChanged, this,
                [&] { mostSelected = qMax(mostSelected, ui->listWidget->selectedItems().size()); });

        QVERIFY(QMetaObject::invokeMethod(&d, "Run"));

        QCOMPARE(ui->listWidget->currentRow(), 0);
        QCOMPARE(mostSelected, ui->listWidget->count()); // every row was selected on the way
        QVERIFY(ui->Run->isEnabled());
        QCOMPARE(MyGlobal::CurSelection, second);
        QCOMPARE(DialogTestAccess::preview(d).toImage(), composite);
        QCOMPARE(testsupport::shownPixmap(DialogTestAccess::scene(d)).toImage(), shown);
        QVERIFY(QFile::exists(m_output + QStringLiteral("/blue1.JPG")));
        QVERIFY(!QFile::exists(m_output + QStringLiteral("/1green.JPG")));
    }

    // Saving starts by reloading the photo (any keying held in the working
    // image is dropped) and announces itself, but writes the composite.
    void saveReloadsPhotoFirstAndWritesTheComposite()
    {
        Dialog d;
        d.show();
        QVERIFY(QTest::qWaitForWindowExposed(&d));
        const QString path = pic(QStringLiteral("key.png"));
        choose(d, 0, path);
        clickPreview(d, kBackdropClick);
        QVERIFY(asRgb32(DialogTestAccess::foreground(d)) != asRgb32(QImage(path)));
        QSignalSpy progress(&d, &Dialog::newProgress);

        pressSaveImage(d);

        QCOMPARE(progress.count(), 1);
        QCOMPARE(progress.at(0).at(0).toInt(), 1);
        QCOMPARE(asRgb32(DialogTestAccess::foreground(d)), asRgb32(QImage(path)));
        QCOMPARE(asRgb32(QImage(m_output + QStringLiteral("/key.png"))), asRgb32(keyedByHand(d, path, kBackdropClick)));
    }

    // A missing output folder is not made by saving: the save fails quietly
    // and the opener is still run on both paths.
    void saveNeverCreatesMissingOutputFolder()
    {
        Dialog d;
        d.show();
        QVERIFY(QTest::qWaitForWindowExposed(&d));
        const QString missing = m_home + QStringLiteral("/Documents/Gone");
        MyGlobal::outputDir = missing;
        clickPreview(d, kBackdropClick);
        const auto before = listTree(m_home);

        pressSaveImage(d);

        QCOMPARE(changedEntries(before, listTree(m_home)), QStringList());
        QVERIFY(!QFileInfo::exists(missing));
        const QList<QStringList> expected{{missing}, {missing + QStringLiteral("/1green.JPG")}};
        QCOMPARE(m_opener.calls(), expected);
    }

    // With no foreground path the target is the folder followed by "/": the
    // save fails, nothing is written, and the opener still runs twice.
    void saveWithoutForegroundPathStillRunsOpener()
    {
        Dialog d;
        d.show();
        QVERIFY(QTest::qWaitForWindowExposed(&d));
        clickPreview(d, kBackdropClick);
        MyGlobal::CurSelection.clear();
        const auto before = listTree(m_home);

        QVERIFY(QMetaObject::invokeMethod(&d, "Run"));

        QCOMPARE(changedEntries(before, listTree(m_home)), QStringList());
        const QList<QStringList> expected{{m_output}, {m_output + QLatin1Char('/')}};
        QCOMPARE(m_opener.calls(), expected);
    }

    // Whatever size and format are picked, a save writes the composite at its
    // own size and in its source file's format.
    void saveIgnoresOutputSizeAndFormatChoices()
    {
        Dialog d;
        d.show();
        QVERIFY(QTest::qWaitForWindowExposed(&d));
        auto* sizes = new QComboBox(&d);
        sizes->setObjectName(QStringLiteral("comboBox"));
        sizes->addItems({QStringLiteral("Original"), QStringLiteral("640x480"), QStringLiteral("320x240"),
                         QStringLiteral("240x160"), QStringLiteral("Thumbnails"), QStringLiteral("Custom Size")});
        QMetaObject::connectSlotsByName(&d);
        ModalAnswerer answerer([](QWidget* modal) {
            auto* width = modal->findChild<QLineEdit*>(QStringLiteral("width"));
            auto* height = modal->findChild<QLineEdit*>(QStringLiteral("height"));
            auto* ok = modal->findChild<QPushButton*>(QStringLiteral("Ok"));
            if (!width || !height || !ok)
                return dismiss(modal);
            width->setText(QStringLiteral("50"));
            height->setText(QStringLiteral("40"));
            QTest::mouseClick(ok, Qt::LeftButton);
        });
        sizes->setCurrentIndex(5);
        QCOMPARE(UserSettings::m_size, QSize(50, 40));
        sizes->setCurrentIndex(1);

        const QString path = pic(QStringLiteral("key.png"));
        choose(d, 0, path);
        clickPreview(d, kBackdropClick);
        pressSaveImage(d);

        QImageReader reader(m_output + QStringLiteral("/key.png"));
        QCOMPARE(reader.format(), QByteArray("png"));
        QCOMPARE(reader.size(), QSize(160, 120));
        QCOMPARE(asRgb32(reader.read()), asRgb32(keyedByHand(d, path, kBackdropClick)));
    }

    // The folder picker starts in the output folder, shows folders only and
    // keeps links unresolved; cancelling it changes nothing.
    void chooseOutDirCancelledChangesNothing()
    {
        Dialog d;
        d.show();
        QVERIFY(QTest::qWaitForWindowExposed(&d));
        QPushButton* button = addChooseOutDirButton(d);
        const auto before = listTree(m_home);
        QString caption;
        QString startFolder;
        bool foldersOnly = false;
        bool linksKept = false;
        ModalAnswerer answerer([&](QWidget* modal) {
            if (auto* picker = qobject_cast<QFileDialog*>(modal)) {
                caption = picker->windowTitle();
                startFolder = picker->directory().absolutePath();
                foldersOnly = picker->testOption(QFileDialog::ShowDirsOnly);
                linksKept = picker->testOption(QFileDialog::DontResolveSymlinks);
            }
            dismiss(modal);
        });

        QTest::mouseClick(button, Qt::LeftButton);

        QCOMPARE(answerer.seen.size(), 1);
        QCOMPARE(caption, QStringLiteral("Select Output Directory"));
        QCOMPARE(startFolder, m_output);
        QVERIFY(foldersOnly);
        QVERIFY(linksKept);
        QCOMPARE(MyGlobal::outputDir, m_output);
        QCOMPARE(withoutFileDialogState(changedEntries(before, listTree(m_home))), QStringList());
    }

    // Choosing the same parent folder twice: the first time "Osl_Output#" is
    // made silently and used; the second time the warning comes up, where
    // Abort keeps the previous output folder and "Create Anyway, I know what
    // I'm doing" takes the existing "Osl_Output#".
    void chooseOutDirSameParentTwice()
    {
        Dialog d;
        d.show();
        QVERIFY(QTest::qWaitForWindowExposed(&d));
        QPushButton* button = addChooseOutDirButton(d);
        const QString first = m_home + QStringLiteral("/Pictures/Keyed");
        const QString other = m_home + QStringLiteral("/Pictures/Other");
        QVERIFY(QDir().mkpath(first));
        QVERIFY(QDir().mkpath(other));

        QString pick;          // folder the picker answers with
        QString answer;        // text of the warning's button to press
        QString warningText;
        QList<QAbstractButton*> warningButtons;
        QMessageBox::StandardButtons standard;
        QString defaultText;
        QMessageBox::ButtonRole customRole = QMessageBox::InvalidRole;
        QMessageBox::Icon icon = QMessageBox::Warning;
        QString title = QStringLiteral("unset");
        QWidget* parent = &d;
        ModalAnswerer answerer([&](QWidget* modal) {
            if (auto* picker = qobject_cast<QFileDialog*>(modal)) {
                picker->setDirectory(pick);
                static_cast<QDialog*>(picker)->accept(); // the "Choose" button
            } else if (auto* box = qobject_cast<QMessageBox*>(modal)) {
                warningText = box->text();
                warningButtons = box->buttons();
                standard = box->standardButtons();
                defaultText = box->defaultButton() ? box->defaultButton()->text() : QString();
                if (QAbstractButton* custom = buttonWithText(box, kCreateAnyway))
                    customRole = box->buttonRole(custom);
                icon = box->icon();
                title = box->windowTitle();
                parent = box->parentWidget();
                QAbstractButton* press = buttonWithText(box, answer);
                if (!press)
                    return dismiss(modal);
                QTest::mouseClick(press, Qt::LeftButton);
            } else {
                dismiss(modal);
            }
        });
        const QString firstOut = first + QStringLiteral("/Osl_Output#");
        const QString otherOut = other + QStringLiteral("/Osl_Output#");

        // First choice of the folder: made silently.
        pick = first;
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(answerer.seen.size(), 1);
        QCOMPARE(MyGlobal::outputDir, firstOut);
        QVERIFY(QFileInfo(firstOut).isDir());
        QVERIFY(QFile(firstOut + QStringLiteral("/earlier.png")).open(QIODevice::WriteOnly));

        pick = other;
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(MyGlobal::outputDir, otherOut);

        // Second choice of the first folder: warned; Abort keeps the previous one.
        pick = first;
        answer = QStringLiteral("Abort");
        const int seenBefore = answerer.seen.size();
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(answerer.seen.size(), seenBefore + 2);
        QCOMPARE(answerer.seen.last().className, QStringLiteral("QMessageBox"));
        QCOMPARE(warningText, kWarningText);
        QCOMPARE(warningButtons.size(), 2);
        QCOMPARE(standard, QMessageBox::StandardButtons(QMessageBox::Abort));
        QCOMPARE(defaultText, answer);
        QCOMPARE(customRole, QMessageBox::ActionRole);
        QCOMPARE(icon, QMessageBox::NoIcon);
        QCOMPARE(title, QString());
        QVERIFY(parent == nullptr);
        QCOMPARE(MyGlobal::outputDir, otherOut);

        // And again, now going ahead: the existing folder is used as it is.
        answer = kCreateAnyway;
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(answerer.seen.size(), seenBefore + 4);
        QCOMPARE(MyGlobal::outputDir, firstOut);
        QVERIFY(QFile::exists(firstOut + QStringLiteral("/earlier.png")));
        QCOMPARE(QDir(first).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{QStringLiteral("Osl_Output#")});
    }

    // When "Osl_Output#" can be neither made nor entered (a file holds the
    // name), going ahead makes the chosen folder itself the output folder.
    void chooseOutDirFallsBackToChosenFolder()
    {
        Dialog d;
        d.show();
        QVERIFY(QTest::qWaitForWindowExposed(&d));
        QPushButton* button = addChooseOutDirButton(d);
        const QString chosen = m_home + QStringLiteral("/Blocked");
        QVERIFY(QDir().mkpath(chosen));
        QFile blocker(chosen + QStringLiteral("/Osl_Output#"));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        bool warned = false;
        ModalAnswerer answerer([&](QWidget* modal) {
            if (auto* picker = qobject_cast<QFileDialog*>(modal)) {
                picker->setDirectory(chosen);
                static_cast<QDialog*>(picker)->accept(); // the "Choose" button
            } else if (auto* box = qobject_cast<QMessageBox*>(modal)) {
                warned = box->text() == kWarningText;
                QAbstractButton* press = buttonWithText(box, kCreateAnyway);
                if (!press)
                    return dismiss(modal);
                QTest::mouseClick(press, Qt::LeftButton);
            } else {
                dismiss(modal);
            }
        });

        QTest::mouseClick(button, Qt::LeftButton);

        QVERIFY(warned);
        QCOMPARE(MyGlobal::outputDir, chosen);
        QVERIFY(QFileInfo(chosen + QStringLiteral("/Osl_Output#")).isFile());
    }
};

PLENDRA_TEST_MAIN(SaveTest)
#include "tst_save.moc"
