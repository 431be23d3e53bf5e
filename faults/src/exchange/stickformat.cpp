#include "stickformat.h"

#include "charismasticks.h"
#include "gocadplinesticks.h"
#include "iesxsticks.h"
#include "opendtectsticks.h"
#include "textfields.h"
#include "textlinereader.h"

namespace fault::exchange {

namespace {

// Every name a user may type; the first entry of a format gives its canonical name.
struct FormatName {
    StickFormat format;
    const char* name;
};
const FormatName kNames[] = {
    {StickFormat::Charisma, "charisma"}, {StickFormat::Iesx, "iesx"},
    {StickFormat::Iesx, "kingdom"},      {StickFormat::OpendTect, "opendtect"},
    {StickFormat::OpendTect, "odt"},     {StickFormat::GocadPLine, "gocad"},
    {StickFormat::GocadPLine, "pline"},
};

constexpr int kMaxLinesToSniff = 100;
constexpr int kCardImageLength = 47;
constexpr int kCoordinateCount = 3;

bool guessFromLine(const QString& line, StickFormat& format)
{
    const QString trimmed = line.trimmed();
    if (trimmed.startsWith(QLatin1String("GOCAD"))) format = StickFormat::GocadPLine;
    else if (trimmed.startsWith(QLatin1String("INLINE"), Qt::CaseInsensitive)) format = StickFormat::Charisma;
    else if (trimmed.startsWith(QLatin1String("PROFILE"))) format = StickFormat::Iesx;
    else {
        std::vector<TextField> fields;
        QString problem;
        if (!splitFields(trimmed, true, fields, problem) || fields.empty()) return false;
        int numbers = 0;
        double ignored = 0.0;
        for (const TextField& field : fields)
            if (!field.quoted && parseReal(field.text, ignored)) ++numbers;
        const bool cardImage = line.size() >= kCardImageLength && !line.contains(QLatin1Char('\t')) &&
                               parseReal(line.left(16), ignored) && parseReal(line.mid(16, 16), ignored);
        if (cardImage && !fields.front().quoted) format = StickFormat::Iesx;
        else if (fields.front().quoted || numbers >= kCoordinateCount) format = StickFormat::OpendTect;
        else return false;
    }
    return true;
}

} // namespace

bool stickFormatFromName(const QString& name, StickFormat& format)
{
    for (const FormatName& entry : kNames) {
        if (name.compare(QLatin1String(entry.name), Qt::CaseInsensitive) == 0) {
            format = entry.format;
            return true;
        }
    }
    return false;
}

QString stickFormatName(StickFormat format)
{
    for (const FormatName& entry : kNames)
        if (entry.format == format) return QLatin1String(entry.name);
    return {};
}

QStringList stickFormatNames()
{
    QStringList names;
    for (const FormatName& entry : kNames)
        if (stickFormatName(entry.format) == QLatin1String(entry.name)) names << entry.name;
    return names;
}

bool guessStickFormat(const QString& path, StickFormat& format)
{
    TextLineReader reader(path);
    if (!reader.open()) return false;
    QString line;
    while (reader.lineNumber() < kMaxLinesToSniff && reader.next(line)) {
        const QString trimmed = line.trimmed();
        if (trimmed.isEmpty() || trimmed.startsWith(QLatin1Char('#'))) continue;
        return guessFromLine(line, format);
    }
    return false;
}

ExchangeStatus readSticks(const QString& path, StickFormat format, StickSet& result,
                          const QString& defaultName)
{
    switch (format) {
    case StickFormat::Charisma: return readCharismaSticks(path, result, defaultName);
    case StickFormat::Iesx: return readIesxSticks(path, result, defaultName);
    case StickFormat::OpendTect: return readOpendTectSticks(path, result, defaultName);
    case StickFormat::GocadPLine: return readGocadPLineSticks(path, result, defaultName);
    }
    return ExchangeStatus::failure(path, 0, QStringLiteral("unknown fault stick format"));
}

ExchangeStatus writeSticks(const QString& path, StickFormat format, const StickSet& sticks)
{
    switch (format) {
    case StickFormat::Charisma: return writeCharismaSticks(path, sticks);
    case StickFormat::Iesx: return writeIesxSticks(path, sticks);
    case StickFormat::OpendTect: return writeOpendTectSticks(path, sticks);
    case StickFormat::GocadPLine: return writeGocadPLineSticks(path, sticks);
    }
    return ExchangeStatus::failure(path, 0, QStringLiteral("unknown fault stick format"));
}

} // namespace fault::exchange
