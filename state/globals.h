// SPDX-License-Identifier: MIT
#pragma once

// Process-wide state shared by the window, its dialogs and the engine. It lives
// for the whole process, has no accessors and is only touched from the GUI
// thread, so it needs no locking.

#include <QColor>
#include <QFile>
#include <QFont>
#include <QPoint>
#include <QSize>
#include <QString>

class MyGlobal
{
public:
    static QString appDir;        // folder that holds Plendra.app, the samples and "Bkg"
    static QString HotFolder_FG;  // the watched foreground folder
    static QPoint xyClicked;      // last key click in the preview; (0, 0) means none
    static QString outputDir;     // where "Save Image" writes
    static QFile log;             // "/tmp/log.txt", truncated at start
    static QString CurSelection;   // path of the foreground shown
    static QString CurSelectionBk; // path of the background chosen
    static QString LasHotFile;
    static int Cur_wmpos;         // alignment of the text overlay
    static QString Cur_wmText;    // text of the overlay
    static bool LoadPresets;
    static QSize PrevSize;        // box the main preview is fitted into
    static QSize PrevSize2;       // box the text-overlay preview is fitted into
};

class UserSettings
{
public:
    static QColor m_clr;          // colour of the text overlay
    static QFont m_font;          // font of the text overlay
    static QSize m_size;          // custom output size
    static bool m_usedefault;
    static int m_transparency;    // alpha of the text overlay, 0 to 255
};

class Defaults
{
public:
    static QFont m_font;
    static QColor m_clr;
};
