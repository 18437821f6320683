// SPDX-License-Identifier: MIT
#include "batch/batchoptions.h"

#include "batch/optiontable.h"

#include "state/version.h"

#include <QCommandLineParser>
#include <QFileInfo>
#include <QRegularExpression>

namespace batch {

namespace {

const QStringList kFormats = {QStringLiteral("jpg"), QStringLiteral("png"), QStringLiteral("tif"), QStringLiteral("bmp")};

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

// Print sizes up to 100 megapixels, the largest photos a camera takes.
constexpr qint64 kMaxPrintPixels = 100'000'000;

std::optional<QSize> sizeFrom(const QString& text)
{
    static const QRegularExpression form(QStringLiteral("^\\s*(\\d{1,6})\\s*[xX]\\s*(\\d{1,6})\\s*$"));
    const QRegularExpressionMatch m = form.match(text);
    if (!m.hasMatch())
        return std::nullopt;
    const QSize size(m.captured(1).toInt(), m.captured(2).toInt());
    if (size.isEmpty() || qint64(size.width()) * size.height() > kMaxPrintPixels)
        return std::nullopt;
    return size;
}

// The backgrounds' base names, which name the composites: the first that
// two backgrounds share, or empty.
QString sharedBaseName(const QStringList& backgrounds)
{
    QStringList seen;
    for (const QString& b : backgrounds) {
        const QString base = QFileInfo(b).completeBaseName();
        if (seen.contains(base))
            return base;
        seen << base;
    }
    return QString();
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
    o.backgrounds = p.values(QStringLiteral("background"));
    o.outputFolder = p.value(QStringLiteral("output"));
    o.transparent = p.isSet(QStringLiteral("transparent"));
    o.soft = p.isSet(QStringLiteral("soft"));
    o.watch = p.isSet(QStringLiteral("watch"));
    o.json = p.isSet(QStringLiteral("json"));
    o.poll = p.isSet(QStringLiteral("poll"));
    o.inputs = p.positionalArguments();
    if (p.isSet(QStringLiteral("key-point")) == p.isSet(QStringLiteral("key-colour")))
        return QStringLiteral("give either -k X,Y or -c '#RRGGBB' or -c auto");
    if (p.isSet(QStringLiteral("key-point")) && !(o.keyPoint = pointFrom(p.value(QStringLiteral("key-point")))))
        return QStringLiteral("the key point must be X,Y in photo pixels, as in 20,30");
    if (p.isSet(QStringLiteral("key-colour"))) {
        const QString colour = p.value(QStringLiteral("key-colour"));
        o.autoKey = colour.trimmed().compare(QLatin1String("auto"), Qt::CaseInsensitive) == 0;
        if (!o.autoKey && !(o.keyColour = colourFrom(colour)))
            return QStringLiteral("the key colour must be #RRGGBB, as in #20C040, or auto");
    }
    o.backgrounds.removeAll(QString());
    if (o.backgrounds.isEmpty() && !o.transparent)
        return QStringLiteral("give the background photo with -b FILE (or ask for --transparent)");
    if (const QString shared = sharedBaseName(o.backgrounds); !shared.isEmpty() && !o.transparent)
        return QStringLiteral("two backgrounds are named %1: their composites would have one name").arg(shared);
    if (p.isSet(QStringLiteral("size"))) {
        const std::optional<QSize> size = sizeFrom(p.value(QStringLiteral("size")));
        if (!size)
            return QStringLiteral("the size must be WxH in pixels, as in 1800x1200, at most 100 megapixels");
        o.printSize = *size;
    }
    o.overlay = p.value(QStringLiteral("overlay"));
    if (p.isSet(QStringLiteral("overlay")) && o.overlay.isEmpty())
        return QStringLiteral("name the overlay picture with --overlay FILE");
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

ParsedCommandLine parseCommandLine(const QStringList& arguments)
{
    QCommandLineParser p;
    p.setSingleDashWordOptionMode(QCommandLineParser::ParseAsCompactedShortOptions);
    for (const OptionEntry& o : optionTable())
        p.addOption(QCommandLineOption(o.names, o.description, o.valueName));
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
