// SPDX-License-Identifier: MIT
// "Save Image", driven on the real window: what it writes, where, and what it
// hands to the opener.
#include "tests/output/savetestcase.h"

using testsupport::changedEntries;
using testsupport::listTree;
using widgettest::ModalAnswerer;

using namespace savetest;

class SaveTest : public SaveTestCase
{
    Q_OBJECT

private slots:
    // With an empty FOREGROUNDS list, pressing "Save Image" shows the
    // add-files dialog and writes nothing.
    void emptyListAsksForPhotosAndWritesNothing()
    {
        Dialog& d = window();
        const widgettest::WindowWidgets ui(d);
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
        Dialog& d = window();
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

        Dialog& d = window();
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
        Dialog& d = window();
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
        Dialog& d = window();
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
        Dialog& d = window();
        const widgettest::WindowWidgets ui(d);
        const QString second = m_samples.path() + QStringLiteral("/blue1.JPG");
        QCOMPARE(widgettest::itemTexts(ui->listWidget).value(1), second);
        choose(d, 1, second);
        clickPreview(d, kBackdropClick);
        const QImage composite = DialogTestAccess::preview(d).toImage();
        const QImage shown = widgettest::shownPixmap(DialogTestAccess::scene(d)).toImage();
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
        QCOMPARE(widgettest::shownPixmap(DialogTestAccess::scene(d)).toImage(), shown);
        QVERIFY(QFile::exists(m_output + QStringLiteral("/blue1.JPG")));
        QVERIFY(!QFile::exists(m_output + QStringLiteral("/1green.JPG")));
    }

    // Saving starts by reloading the photo (any keying held in the working
    // image is dropped) and announces itself, but writes the composite.
    void saveReloadsPhotoFirstAndWritesTheComposite()
    {
        Dialog& d = window();
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
        Dialog& d = window();
        const QString missing = m_home + QStringLiteral("/Documents/Gone");
        MyGlobal::outputDir = missing;
        clickPreview(d, kBackdropClick);
        const auto before = listTree(m_home);

        pressSaveImage(d);

        QCOMPARE(changedEntries(before, listTree(m_home)), QStringList());
        QVERIFY(!QFileInfo::exists(missing));
        QCOMPARE(m_opener.calls(), QList<QStringList>({{missing}, {missing + QStringLiteral("/1green.JPG")}}));
    }

    // With no foreground path the target is the folder followed by "/": the
    // save fails, nothing is written, and the opener still runs twice.
    void saveWithoutForegroundPathStillRunsOpener()
    {
        Dialog& d = window();
        clickPreview(d, kBackdropClick);
        MyGlobal::CurSelection.clear();
        const auto before = listTree(m_home);

        QVERIFY(QMetaObject::invokeMethod(&d, "Run"));

        QCOMPARE(changedEntries(before, listTree(m_home)), QStringList());
        QCOMPARE(m_opener.calls(), QList<QStringList>({{m_output}, {m_output + QLatin1Char('/')}}));
    }

    // Whatever size and format are picked, a save writes the composite at its
    // own size and in its source file's format.
    void saveIgnoresOutputSizeAndFormatChoices()
    {
        Dialog& d = window();
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
};

PLENDRA_TEST_MAIN(SaveTest)
#include "tst_save.moc"
