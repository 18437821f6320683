// SPDX-License-Identifier: MIT
// BACKGROUNDS at start-up from a "Bkg" folder whose picture names differ only
// in letter case: every one of them is listed, in name order without regard
// to case, and the first becomes the background.

#include "tests/fixture/windowfixture.h"

#include "state/globals.h"
#include "mainwindow/dialog.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QListWidget>
#include <QTest>

using namespace widgettest;

namespace {

QStringList fileNames(const QStringList& paths)
{
    QStringList names;
    for (const QString& path : paths)
        names << QFileInfo(path).fileName();
    return names;
}

} // namespace

class TestBkgCaseOrder : public widgettest::WindowTestCase
{
    Q_OBJECT

private slots:
    void namesDifferingOnlyInCaseAreAllListedInNameOrder();
};

void TestBkgCaseOrder::namesDifferingOnlyInCaseAreAllListedInNameOrder()
{
    // Written in an order that is not the listing order.
    Window w({QStringLiteral("b.jpg"), QStringLiteral("B.JPG"), QStringLiteral("a.PNG"), QStringLiteral("A.png"),
              QStringLiteral("c.Jpg")});
    QVERIFY(w.ok());
    auto* backgrounds = w.dialog->findChild<QListWidget*>(QStringLiteral("listWidget_Bk"));
    QVERIFY(backgrounds);
    const QStringList texts = widgettest::itemTexts(backgrounds);

    // Each item names its picture by its full path in "Bkg".
    for (const QString& text : texts)
        QCOMPARE(QFileInfo(text).absolutePath(), w.path(QStringLiteral("Bkg")));

    // All five, each once: "c.Jpg" matches "*.jpg" and "*.JPG" without regard
    // to case, and no name is listed twice for matching two patterns.
    QStringList names = fileNames(texts);
    QCOMPARE(names.size(), 5);
    QStringList set = names;
    set.sort(Qt::CaseSensitive);
    QCOMPARE(set, QStringList({"A.png", "B.JPG", "a.PNG", "b.jpg", "c.Jpg"}));

    // Name order without regard to case: the two a's, the two b's, then c.
    QCOMPARE(names.at(4), QStringLiteral("c.Jpg"));
    QStringList folded;
    for (const QString& name : names)
        folded << name.toLower();
    QCOMPARE(folded, QStringList({"a.png", "a.png", "b.jpg", "b.jpg", "c.jpg"}));

    // Names equal but for case compare equal, so their order is the one the
    // folder itself lists them in (the file system's, not the names'): each
    // pair keeps the order of the folder's unsorted listing.
    QDir bkg(w.path(QStringLiteral("Bkg")));
    const QStringList unsorted = bkg.entryList({"*.PNG", "*.JPG", "*.png", "*.jpg"}, QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Unsorted);
    QCOMPARE(unsorted.size(), 5);
    const auto before = [&unsorted](const QString& a, const QString& b) { return unsorted.indexOf(a) < unsorted.indexOf(b); };
    QCOMPARE(names.at(0) == QStringLiteral("A.png"), before(QStringLiteral("A.png"), QStringLiteral("a.PNG")));
    QCOMPARE(names.at(2) == QStringLiteral("B.JPG"), before(QStringLiteral("B.JPG"), QStringLiteral("b.jpg")));
    qInfo("BACKGROUNDS at start-up: %s (the folder lists: %s)", qPrintable(names.join(", ")),
          qPrintable(unsorted.join(", ")));

    // The first listed is current, selected and the background.
    QCOMPARE(backgrounds->currentRow(), 0);
    QCOMPARE(selectedTexts(backgrounds), QStringList({texts.first()}));
    QCOMPARE(MyGlobal::CurSelectionBk, texts.first());
}

PLENDRA_TEST_MAIN(TestBkgCaseOrder)
#include "tst_bkgcaseorder.moc"
