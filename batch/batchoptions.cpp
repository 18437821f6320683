// SPDX-License-Identifier: MIT
#include "batch/batchoptions.h"

#include "state/version.h"

#include <QCommandLineParser>
#include <QRegularExpression>

namespace batch {

namespace {

const QStringList kFormats = {QStringLiteral("jpg"), QStringLiteral("png"), QStringLiteral("tif"), QStringLiteral("bmp")};

QString helpText()
{
    return usageLine() + QStringLiteral("\n"
        "Keys photos shot against a green or blue backdrop onto a background, as the\n"
        "Plendra window does when its backdrop is clicked and \"Save Image\" pressed.\n\n"
        "  -b, --background FILE   the background photo; fitted to each photo as the window fits it\n"
        "  -k, --key-point X,Y     take the key colour from this pixel of each photo (photo pixels, origin top left)\n"
        "  -c, --key-colour COLOUR a fixed key colour instead (#RRGGBB)\n"
        "  -o, --output DIR        where composites go (default: the window's output folder, Documents/Plendra)\n"
        "  -f, --format FMT        jpg, png, tif or bmp (default: each photo's own suffix, as the window saves)\n"
        "  -q, --quality N         JPEG quality 0-100 (default: what the window writes)\n"
        "      --transparent       write a PNG whose backdrop is transparent instead of a composite (no -b needed)\n"
        "  -w, --watch             after the photos given, keep keying every new photo that arrives in the FOLDERs\n"
        "      --settle MS         with --watch, how long a new photo must stay unchanged before it is keyed (default 1000)\n"
        "  -j, --jobs N            photos keyed at once (default: the machine's cores)\n"
        "      --shard K/N         take only the K-th of N equal shares of the photos (for several machines)\n"
        "      --json              one JSON object a line per photo (name, output, key colour, replaced share, ms, error)\n"
        "  -h, --help              show this help\n"
        "      --version           show the version\n\n"
        "Exit status: 0 when every photo was written, 1 when some failed, 2 for a usage error.\n");
}

std::optional<QPoint> pointFrom(const QString& text)
{
    static const QRegularExpression form(QStringLiteral("^\\s*(\\d{1,9})\\s*,\\s*(\\d{1,9})\\s*$"));
    const QRegularExpressionMatch m = form.match(text);
    if (!m.hasMatch())
        return std::nullopt;
    return QPoint(m.captured(1).toInt(), m.captured(2).toInt());
}

std::optional<QRgb> colourFrom(const QString& text)
{
    static const QRegularExpression form(QStringLiteral("^#([0-9A-Fa-f]{6})$"));
    const QRegularExpressionMatch m = form.match(text.trimmed());
    if (!m.hasMatch())
        return std::nullopt;
    return QRgb(0xFF000000u | m.captured(1).toUInt(nullptr, 16));
}

bool numberIn(const QString& text, int low, int high, int* value)
{
    bool ok = false;
    const int n = text.trimmed().toInt(&ok);
    if (!ok || n < low || n > high)
        return false;
    *value = n;
    return true;
}

bool shardFrom(const QString& text, int* shard, int* shards)
{
    const QStringList parts = text.split(QLatin1Char('/'));
    return parts.size() == 2 && numberIn(parts[1], 1, 1000000, shards) && numberIn(parts[0], 1, *shards, shard);
}

ParsedCommandLine usageError(const QString& message)
{
    ParsedCommandLine out;
    out.exitCode = 2;
    out.standardError = QStringLiteral("plendra-batch: ") + message + QLatin1Char('\n') + usageLine() + QLatin1Char('\n');
    return out;
}

// Reads the values of a parser that has accepted the arguments; an empty
// error means the options are usable.
QString readOptions(const QCommandLineParser& p, BatchOptions& o)
{
    o.background = p.value(QStringLiteral("background"));
    o.outputFolder = p.value(QStringLiteral("output"));
    o.transparent = p.isSet(QStringLiteral("transparent"));
    o.watch = p.isSet(QStringLiteral("watch"));
    o.json = p.isSet(QStringLiteral("json"));
    o.inputs = p.positionalArguments();
    if (p.isSet(QStringLiteral("key-point")) == p.isSet(QStringLiteral("key-colour")))
        return QStringLiteral("give either -k X,Y or -c '#RRGGBB'");
    if (p.isSet(QStringLiteral("key-point")) && !(o.keyPoint = pointFrom(p.value(QStringLiteral("key-point")))))
        return QStringLiteral("the key point must be X,Y in photo pixels, as in 20,30");
    if (p.isSet(QStringLiteral("key-colour")) && !(o.keyColour = colourFrom(p.value(QStringLiteral("key-colour")))))
        return QStringLiteral("the key colour must be #RRGGBB, as in #20C040");
    if (o.background.isEmpty() && !o.transparent)
        return QStringLiteral("give the background photo with -b FILE (or ask for --transparent)");
    if (p.isSet(QStringLiteral("format"))) {
        o.format = p.value(QStringLiteral("format")).toLower().toLatin1();
        if (o.format == "jpeg")
            o.format = "jpg";
        if (o.format == "tiff")
            o.format = "tif";
        if (!kFormats.contains(QString::fromLatin1(o.format)))
            return QStringLiteral("the format must be jpg, png, tif or bmp");
    }
    if (o.transparent && !o.format.isEmpty() && o.format != "png")
        return QStringLiteral("--transparent writes PNG; leave out -f or give -f png");
    if (o.transparent)
        o.format = "png";
    if (p.isSet(QStringLiteral("quality")) && !numberIn(p.value(QStringLiteral("quality")), 0, 100, &o.quality))
        return QStringLiteral("the quality must be a number from 0 to 100");
    if (p.isSet(QStringLiteral("jobs")) && !numberIn(p.value(QStringLiteral("jobs")), 1, 1024, &o.jobs))
        return QStringLiteral("the number of jobs must be from 1 to 1024");
    if (p.isSet(QStringLiteral("shard")) && !shardFrom(p.value(QStringLiteral("shard")), &o.shard, &o.shards))
        return QStringLiteral("the shard must be K/N with 1 <= K <= N, as in 2/4");
    if (p.isSet(QStringLiteral("settle")) && !numberIn(p.value(QStringLiteral("settle")), 0, 3600000, &o.settleMs))
        return QStringLiteral("the settle time must be a number of milliseconds");
    if (o.inputs.isEmpty())
        return QStringLiteral("name at least one photo or folder");
    return QString();
}

} // namespace

QString usageLine()
{
    return QStringLiteral("Usage: plendra-batch -b BACKGROUND (-k X,Y | -c '#RRGGBB') [options] PHOTO|FOLDER...");
}

ParsedCommandLine parseCommandLine(const QStringList& arguments)
{
    QCommandLineParser p;
    p.setSingleDashWordOptionMode(QCommandLineParser::ParseAsCompactedShortOptions);
    p.addOptions({
        {{QStringLiteral("b"), QStringLiteral("background")}, QString(), QStringLiteral("FILE")},
        {{QStringLiteral("k"), QStringLiteral("key-point")}, QString(), QStringLiteral("X,Y")},
        {{QStringLiteral("c"), QStringLiteral("key-colour")}, QString(), QStringLiteral("COLOUR")},
        {{QStringLiteral("o"), QStringLiteral("output")}, QString(), QStringLiteral("DIR")},
        {{QStringLiteral("f"), QStringLiteral("format")}, QString(), QStringLiteral("FMT")},
        {{QStringLiteral("q"), QStringLiteral("quality")}, QString(), QStringLiteral("N")},
        {QStringLiteral("transparent"), QString()},
        {{QStringLiteral("w"), QStringLiteral("watch")}, QString()},
        {QStringLiteral("settle"), QString(), QStringLiteral("MS")},
        {{QStringLiteral("j"), QStringLiteral("jobs")}, QString(), QStringLiteral("N")},
        {QStringLiteral("shard"), QString(), QStringLiteral("K/N")},
        {QStringLiteral("json"), QString()},
        {{QStringLiteral("h"), QStringLiteral("help")}, QString()},
        {QStringLiteral("version"), QString()},
    });
    if (!p.parse(arguments))
        return usageError(p.errorText());
    if (p.isSet(QStringLiteral("help"))) {
        ParsedCommandLine out;
        out.standardOutput = helpText();
        return out;
    }
    if (p.isSet(QStringLiteral("version"))) {
        ParsedCommandLine out;
        out.standardOutput = QStringLiteral("plendra-batch ") + QString::fromLatin1(kPlendraVersion) + QLatin1Char('\n');
        return out;
    }
    ParsedCommandLine out;
    const QString error = readOptions(p, out.options);
    if (!error.isEmpty())
        return usageError(error);
    out.runs = true;
    return out;
}

} // namespace batch
