// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>
#include <QImage>
#include <QModelIndex>
#include <QPixmap>
#include <QString>
#include <QTimer>

class HotFolderChanges;
class ThumbnailProgress;
class QFileSystemWatcher;
class QGraphicsScene;
class QListWidgetItem;
class Ui_Dialog;

// The main window: FOREGROUNDS on the left, BACKGROUNDS on the right, the
// preview in the middle and "Save Image" under it. Its members are defined in
// this folder, one file per concern (dialog_keying.cpp, dialog_rotation.cpp,
// dialog_foregrounds.cpp, dialog_backgrounds.cpp, dialog_hotfolder.cpp,
// dialog_save.cpp); the work itself is done by the keying, intake and output
// libraries, which know nothing of the window.
class Dialog : public QDialog
{
    Q_OBJECT

public:
    explicit Dialog(QWidget* parent = nullptr, Qt::WindowFlags flags = Qt::WindowFlags());
    ~Dialog() override;

    // Rebuilds the preview from m_foreground and keeps the full-size composite
    // in m_preview for saving.
    void UpdateScene();
    // Reloads the foreground from its file, turns it by the chosen angle and
    // fits the background to it.
    void Rotate();
    // Keys img in place against m_bkg for the given key colour.
    void MaskOut(QImage& img, unsigned int key);
    // The tolerance keyer and helpers that the window's own flow does not use.
    void MaskOut2(QImage& img, unsigned int key);
    void approxPixel(const QImage& img, int x, int y, long& dark, long& light);
    bool approximateColor(const QImage& img);
    QFont calcFont(const QImage& img, const QString& text);

    QListWidgetItem* AddFileToDisplay(const QString& path);
    void addAllFilesinFolder(QString folder);

    // Thumbnails of both lists still being made; their items are listed
    // already and fill in as the thumbnails come.
    int pendingThumbnails() const;

signals:
    void newProgress(int);

private slots:
    void on_Presets_clicked();
    void on_Rotation_currentIndexChanged(QString);
    void on_RemoveBackground_clicked();
    void on_AddBackground_clicked();
    void on_listWidget_Bk_clicked(QModelIndex index);
    void on_ChooseOutDir_clicked();
    void on_listWidget_clicked(QModelIndex index);
    void on_comboBox_currentIndexChanged(int index);
    void on_Help_clicked();
    void addfiles();
    void RemoveFiles();
    void Run();
    void pos00();
    void pos01();
    void pos02();
    void pos10();
    void pos11();
    void pos12();
    void pos20();
    void pos21();
    void pos22();
    void EditingDone();
    void UpdateProgress(int);
    void GVClicked(int x, int y);
    void handleDirectoryChanged(const QString& dir);

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    // Steps of the constructor: the two sample photos in FOREGROUNDS, the
    // first of them in the preview, and BACKGROUNDS from the "Bkg" folder
    // with the first picture as the background.
    void listSamplePhotos();
    void showFirstSample();
    void fillBackgroundLibrary();
    // Stores a placement choice of the 3 x 3 grid and refreshes the preview.
    void place(int pos, int textAlign);
    // Lists these photos in FOREGROUNDS, makes the last one current and shows
    // it; with none, shows the current photo again as read from its file.
    void addForegroundsAndShowLast(const QStringList& paths);
    // Lists a new photo of the hot folder at the end of FOREGROUNDS and shows
    // it, as it is, without keying it.
    void showNewestHotPhoto(const QString& path);
    // AddFileToDisplay for the photo about to become current: its icon is
    // made from m_foreground once that is read, so the file is read once.
    QListWidgetItem* addForegroundAwaitingPhoto(const QString& path);

    QFileSystemWatcher* m_watcher = nullptr;
    HotFolderChanges* m_hotFolderChanges = nullptr;
    ThumbnailProgress* m_foregroundProgress = nullptr;
    ThumbnailProgress* m_backgroundProgress = nullptr;
    Ui_Dialog* ui = nullptr;
    // Written only by the placement slots; 0 until then (no region), so that
    // nothing ever reads an unset value.
    int m_pos = 0;
    int m_textAlign = 0;
    QGraphicsScene* m_scene = nullptr; // owned by the application object: lives as long as the process
    QImage m_image;
    QImage m_foreground;
    QImage m_bkg;
    QPixmap m_preview;
    QTimer m_timer;
    int m_flag = 1;

    friend class DialogTestAccess;
};
