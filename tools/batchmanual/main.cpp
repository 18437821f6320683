// SPDX-License-Identifier: MIT
// Writes plendra-batch's manual page: the page's text with its OPTIONS section
// filled from the tool's own option table, so the manual and --help never
// drift apart. Run by the build: plendra_batch_manual PAGE.in PAGE
#include "batch/optiontable.h"

#include <QFile>
#include <QSaveFile>

#include <cstdio>

namespace {

// The line of the page that the options replace.
const QByteArray kOptionsMark = ".\\\" (options: written here at build time from plendra-batch's option table)";

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: plendra_batch_manual PAGE.in PAGE\n");
        return 2;
    }
    QFile in(QFile::decodeName(argv[1]));
    if (!in.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "plendra_batch_manual: cannot read %s\n", argv[1]);
        return 1;
    }
    QByteArray page = in.readAll();
    const qsizetype mark = page.indexOf(kOptionsMark + '\n');
    if (mark < 0) {
        std::fprintf(stderr, "plendra_batch_manual: %s has no options mark\n", argv[1]);
        return 1;
    }
    page.replace(mark, kOptionsMark.size() + 1, batch::manualOptions().toUtf8());
    QSaveFile out(QFile::decodeName(argv[2]));
    if (!out.open(QIODevice::WriteOnly) || out.write(page) != page.size() || !out.commit()) {
        std::fprintf(stderr, "plendra_batch_manual: cannot write %s\n", argv[2]);
        return 1;
    }
    return 0;
}
