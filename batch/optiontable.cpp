// SPDX-License-Identifier: MIT
#include "batch/optiontable.h"

namespace batch {

namespace {

OptionEntry entry(QStringList names, QString valueName, QString description, QString manualNote = {})
{
    return OptionEntry{std::move(names), std::move(valueName), std::move(description), std::move(manualNote)};
}

// The left column of the help: "  -b, --background FILE", or the long name
// alone, indented as if it had a short one.
QString helpNames(const OptionEntry& o)
{
    QString text = QStringLiteral("  ");
    for (const QString& name : o.names) {
        if (name.size() == 1)
            text += QStringLiteral("-%1, ").arg(name);
    }
    if (o.names.first().size() > 1)
        text += QStringLiteral("    ");
    text += QStringLiteral("--") + o.names.last();
    if (!o.valueName.isEmpty())
        text += QLatin1Char(' ') + o.valueName;
    return text;
}

// Text for a roff line: backslashes and hyphens escaped, and no line may
// start with a control character.
QString roffText(QString text)
{
    text.replace(QLatin1Char('\\'), QStringLiteral("\\e"));
    text.replace(QLatin1Char('-'), QStringLiteral("\\-"));
    if (text.startsWith(QLatin1Char('.')) || text.startsWith(QLatin1Char('\'')))
        text.prepend(QStringLiteral("\\&"));
    return text;
}

// The option's names in bold and its value in italics, as man pages show them.
QString manualNames(const OptionEntry& o)
{
    QStringList bold;
    for (const QString& name : o.names)
        bold << roffText((name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name);
    if (bold.size() == 1 && o.valueName.isEmpty())
        return QStringLiteral(".B ") + bold.first();
    QString line = QStringLiteral(".BR ") + bold.join(QStringLiteral(" \", \" "));
    if (!o.valueName.isEmpty())
        line += QStringLiteral(" \" \\fI") + roffText(o.valueName) + QStringLiteral("\\fR\"");
    return line;
}

QString sentence(const QString& text)
{
    QString s = text;
    if (!s.isEmpty())
        s[0] = s[0].toUpper();
    return s.endsWith(QLatin1Char('.')) ? s : s + QLatin1Char('.');
}

} // namespace

const QList<OptionEntry>& optionTable()
{
    static const QList<OptionEntry> table = {
        entry({"b", "background"}, "FILE",
              "a background photo, fitted to each photo as the window fits it; give -b again for more backgrounds",
              "With several backgrounds each photo is decoded and keyed once and composed onto each; "
              "the composites are named PHOTO_BACKGROUND.EXT, the photo's and the background's base names "
              "joined by an underscore, and each is the composite a run with that background alone writes. "
              "Two backgrounds may not share a base name. With one background the composite takes the photo's name."),
        entry({"k", "key-point"}, "X,Y",
              "take the key colour from this pixel of each photo (photo pixels, origin top left)"),
        entry({"c", "key-colour"}, "COLOUR",
              "a fixed key colour instead (#RRGGBB), or auto: the backdrop's own colour, found in each photo",
              "With auto the key colour is the even green or blue colour that holds the photo's border "
              "on more than one side, taken in the middle of its falloff; a photo without one is refused "
              "with one line (exit status 1) rather than keyed on whatever green or blue it holds. "
              "--json reports the colour found as keyColour."),
        entry({"o", "output"}, "DIR",
              "where composites go (default: the window's output folder, Documents/Plendra)"),
        entry({"f", "format"}, "FMT", "the output format: jpg, png, tif or bmp (default: each photo's own suffix, as the window saves)",
              "The composite's name then takes that suffix."),
        entry({"q", "quality"}, "N", "JPEG quality 0-100 (default: what the window writes)"),
        entry({"transparent"}, {},
              "write a PNG whose backdrop is transparent instead of a composite (no -b needed)",
              "Backgrounds given are not used: one cut-out per photo. --size and --overlay finish the cut-out "
              "as they finish a composite."),
        entry({"overlay"}, "FILE",
              "a frame or logo drawn over each composite: a PNG with transparency, stretched to the composite's size",
              "Where the overlay is transparent the composite shows unchanged, where it is opaque the overlay's "
              "pixel is written, in between the two are blended. It is drawn at the final size, after --size."),
        entry({"size"}, "WxH",
              "scale each composite smoothly to cover WxH pixels and cut it to that size in its middle (default: the photo's own size)",
              "A 3:2 shot fills a 6x4 print at 1800x1200 without bars; a portrait shot into a landscape size "
              "keeps its middle band."),
        entry({"soft"}, {},
              "key softly: soft edges for hair, fur and glass, backdrop colour and spill taken out",
              "Each pixel gets an alpha from how far its colour lies from the backdrop at its place "
              "(the backdrop's colour is estimated across the photo, so uneven lighting is followed), "
              "and the subject's own colour is recovered where the backdrop shows through. "
              "With --transparent the PNG holds straight (not premultiplied) alpha. "
              "Without --soft the output is the window's hard key, byte for byte."),
        entry({"w", "watch"}, {},
              "after the photos given, keep keying every new photo that arrives in the FOLDERs",
              "A photo is keyed as soon as it is closed after writing (or moved in) and whole; "
              "where the system sends no change events (network and FUSE file systems) the folders are "
              "looked at every so often and a photo is keyed once it has stayed unchanged for the settle time. "
              "What was keyed is recorded in a journal in the output folder (.plendra-journal): "
              "a photo is keyed again only when the file itself changed (another file under its name, "
              "or other content), never by comparing file times, and never because the run's settings changed. "
              "A composite that cannot be written (a full disk, a removed output folder) is tried again, "
              "at growing intervals up to a minute, until it is; the output folder is made again when it is gone. "
              "A photo cut short or unreadable is tried again when it changes. "
              "SIGINT and SIGTERM finish the photos in flight and end with status 0."),
        entry({"settle"}, "MS",
              "with --watch, how long a photo must stay unchanged to count as written where no close is seen (default 1000)"),
        entry({"poll"}, {},
              "with --watch, look at the folders every so often instead of waiting for change events",
              "For a network share that the watch does not recognise as one: "
              "NFS, SMB/CIFS, 9p, AFS, Ceph and FUSE file systems are polled anyway."),
        entry({"j", "jobs"}, "N", "photos keyed at once (default: the machine's cores)"),
        entry({"shard"}, "K/N", "take only the K-th of N equal shares of the photos (for several machines)"),
        entry({"json"}, {},
              "one JSON object a line per photo (name, output, outputs, key colour, replaced share, ms, error)"),
        entry({"h", "help"}, {}, "show this help"),
        entry({"version"}, {}, "show the version"),
    };
    return table;
}

QString usageLine()
{
    return QStringLiteral("Usage: plendra-batch -b BACKGROUND... (-k X,Y | -c '#RRGGBB' | -c auto) [options] PHOTO|FOLDER...");
}

QString helpText()
{
    // Descriptions start in one column; a longer left side keeps one blank.
    constexpr int kNamesWidth = 25;
    QString text = usageLine() + QStringLiteral("\n"
        "Keys photos shot against a green or blue backdrop onto a background, as the\n"
        "Plendra window does when its backdrop is clicked and \"Save Image\" pressed.\n\n");
    for (const OptionEntry& o : optionTable())
        text += helpNames(o).leftJustified(kNamesWidth) + QLatin1Char(' ') + o.description + QLatin1Char('\n');
    text += QStringLiteral("\nExit status: 0 when every photo was written, 1 when some failed, 2 for a usage error.\n");
    return text;
}

QString manualOptions()
{
    QString roff;
    for (const OptionEntry& o : optionTable()) {
        roff += QStringLiteral(".TP\n") + manualNames(o) + QLatin1Char('\n') + roffText(sentence(o.description));
        if (!o.manualNote.isEmpty())
            roff += QLatin1Char('\n') + roffText(o.manualNote);
        roff += QLatin1Char('\n');
    }
    return roff;
}

} // namespace batch
