// SPDX-License-Identifier: MIT
#include "forms/advanced.h"

#include "state/globals.h"
#include "output/outputchoices.h"
#include "ui_advanced.h"

#include <QColorDialog>
#include <QEvent>
#include <QFontDialog>
#include <QGraphicsScene>
#include <QImageReader>
#include <QPainter>
#include <QPixmap>

namespace {

// The reduced picture the dialog opens with; it is not the fitted size of the
// redrawn preview (MyGlobal::PrevSize2), and both stay as they are.
const QSize kFirstPreviewSize(355, 280);
const QString kFirstPreviewFile = QStringLiteral("preview2.jpeg");

// Labels of the "Output dimension" box: the rows of OutputSizes, then the
// custom size.
const char* const kOutputSizeLabels[] = {"Original", "640x480", "320x240", "240x160", "Thumbnails", "Custom Size"};

// The scroll bar runs from 0 to 100, the alpha from 0 to 255; both directions
// round down, so a value loses a little on every trip.
int alphaFromBar(int value)
{
    return value * 255 / 100;
}

int barFromAlpha(int alpha)
{
    return alpha * 100 / 255;
}

} // namespace

Advanced::Advanced(QWidget* parent)
    : QDialog(parent)
    , ui(new Ui_Advanced)
{
    ui->setupUi(this);
    setWindowFlags(Qt::CustomizeWindowHint | Qt::WindowCloseButtonHint);

    QImageReader reader(MyGlobal::CurSelection);
    reader.setScaledSize(kFirstPreviewSize);
    m_image = reader.read();

    // The reduced picture goes through a file in the current folder and back.
    m_image.save(kFirstPreviewFile);
    const QPixmap first(kFirstPreviewFile);
    m_scene = new QGraphicsScene(this);
    m_scene->addPixmap(first);
    ui->graphicsView->setScene(m_scene);

    // The form leaves the bar at 0, so this emits valueChanged: the stored
    // transparency makes the round trip through the bar's scale (127 comes
    // back as 124) and the preview is drawn.
    ui->horizontalScrollBar->setRange(0, 100);
    ui->horizontalScrollBar->setValue(barFromAlpha(UserSettings::m_transparency));
    UpdateScene();

    ui->ApplySetting->setDefault(true);

    Defaults::m_clr = UserSettings::m_clr;
    Defaults::m_font = UserSettings::m_font;

    for (const char* label : kOutputSizeLabels)
        ui->comboBox->addItem(QString::fromLatin1(label));
    for (const OutputFormat& format : OutputFormats)
        ui->comboFormats->addItem(QString::fromLatin1(format.name));
}

Advanced::~Advanced()
{
    delete ui;
}

void Advanced::changeEvent(QEvent* event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
}

void Advanced::UpdateScene()
{
    QImage picture(MyGlobal::CurSelection);
    // An unreadable picture gives an empty preview.
    if (!picture.isNull()) {
        QPainter painter(&picture);
        painter.setFont(UserSettings::m_font);
        // The transparency belongs to the text colour itself, not just this pen.
        UserSettings::m_clr.setAlpha(UserSettings::m_transparency);
        painter.setPen(UserSettings::m_clr);
        painter.drawText(picture.rect(), MyGlobal::Cur_wmpos, MyGlobal::Cur_wmText);
    }
    QPixmap shown = QPixmap::fromImage(picture);
    if (!shown.isNull())
        shown = shown.scaled(MyGlobal::PrevSize2, Qt::KeepAspectRatio, Qt::SmoothTransformation);

    m_scene->clear();
    m_scene->addPixmap(shown);
    ui->graphicsView->update();
    ui->graphicsView->show();
}

void Advanced::on_horizontalScrollBar_sliderMoved(int value)
{
    UserSettings::m_transparency = alphaFromBar(value);
    UpdateScene();
}

void Advanced::on_horizontalScrollBar_valueChanged(int value)
{
    on_horizontalScrollBar_sliderMoved(value);
}

void Advanced::on_FontSize_clicked()
{
    bool ok = false;
    const QFont start = UserSettings::m_font;
    const QFont chosen = QFontDialog::getFont(&ok, start);
    if (ok) {
        UserSettings::m_font = chosen;
        UpdateScene();
    }
}

void Advanced::on_FontColor_clicked()
{
    const QColor chosen = QColorDialog::getColor(UserSettings::m_clr);
    if (chosen.isValid()) {
        UserSettings::m_clr = chosen;
        UpdateScene();
    }
}

// Neither way out restores Defaults::m_clr or Defaults::m_font: what was
// picked here stays in force; only the "use defaults" switch differs.
void Advanced::on_ApplySetting_clicked()
{
    UserSettings::m_usedefault = false;
    close();
}

void Advanced::on_Reset_clicked()
{
    UserSettings::m_usedefault = true;
    close();
}

// Kept for a button the form no longer has.
void Advanced::on_Reset_3_clicked() {}
