// SPDX-License-Identifier: MIT
#include "state/globals.h"

QString MyGlobal::appDir;
QString MyGlobal::HotFolder_FG;
QPoint MyGlobal::xyClicked(0, 0);
QString MyGlobal::outputDir;
QFile MyGlobal::log(QStringLiteral("/tmp/log.txt"));
QString MyGlobal::CurSelection;
QString MyGlobal::CurSelectionBk;
QString MyGlobal::LasHotFile;
int MyGlobal::Cur_wmpos = 132;
QString MyGlobal::Cur_wmText = QStringLiteral("Text");
bool MyGlobal::LoadPresets = true;
QSize MyGlobal::PrevSize(415, 345);
QSize MyGlobal::PrevSize2(355, 286);

QColor UserSettings::m_clr(Qt::black);
QFont UserSettings::m_font(QStringLiteral("Arial"));
QSize UserSettings::m_size(320, 240);
bool UserSettings::m_usedefault = true;
int UserSettings::m_transparency = 127;

QFont Defaults::m_font;
QColor Defaults::m_clr;
