// SPDX-License-Identifier: MIT
#pragma once

// Every option of plendra-batch in one table: the parser is built from it,
// and its help and the manual page are written from it, so an option and its
// words are kept in one place.

#include <QList>
#include <QString>
#include <QStringList>

namespace batch {

struct OptionEntry
{
    QStringList names;   // the one-letter name first, when there is one
    QString valueName;   // empty for an option that takes no value
    QString description; // one line: the help's and the manual's first sentence
    QString manualNote;  // more for the manual page only; may be empty
};

// The options in the order help lists them.
const QList<OptionEntry>& optionTable();

// The line that starts the help and ends every usage error.
QString usageLine();

// The help plendra-batch --help prints, options from the table.
QString helpText();

// The options as a manual page's OPTIONS section (roff, one .TP per option).
QString manualOptions();

} // namespace batch
