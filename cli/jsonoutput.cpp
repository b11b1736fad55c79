#include "cli/jsonoutput.h"

#include "base/text.h"
#include "cli/songtext.h"
#include "collection/classification.h"

namespace {
/// As the library writes it; empty where there is none to tell the track by.
QString identifier(const SongFile& track)
{
    return track.persistentId == 0
               ? QString()
               : QString::number(qulonglong(track.persistentId), 16).toUpper().rightJustified(16, '0');
}
} // namespace

void JsonOutput::begin(const char* command, const char* list)
{
    m_listsFailures = std::string(list) == "failed";
    if (m_form == Order::Form::Json)
        m_console.write("{\"command\":" + Json::quoted(command) + ",\"" + list + "\":[");
}

void JsonOutput::item(const char* type, const Json& json)
{
    if (m_form == Order::Form::Lines) {
        Json line;
        m_console.writeLine(line.text("type", std::string(type)).members(json).object());
        return;
    }
    m_console.write((m_hasItems ? ",\n" : "\n") + json.object());
    m_hasItems = true;
}

void JsonOutput::failed(const std::string& path, const std::string& reason)
{
    Json json;
    json.path("path", path).text("reason", base::shownName(reason));
    if (m_form == Order::Form::Lines || m_listsFailures)
        item("failed", json);
    else
        m_failed.push_back(json.object());
}

void JsonOutput::end(const Json& counts, bool isInterrupted)
{
    Json end;
    if (m_form == Order::Form::Lines) {
        end.value("counts", counts.object()).flag("interrupted", isInterrupted);
        item("counts", end);
        return;
    }
    if (!m_listsFailures)
        end.value("failed", Json::list(m_failed));
    end.value("counts", counts.object()).flag("interrupted", isInterrupted);
    m_console.writeLine("]," + end.object().substr(1));
}

Json JsonOutput::shortSong(const SongFile& song)
{
    Json json;
    json.path("path", song.path).text("title", song.title).text("artist", song.artist);
    json.text("format", SongText::format(song)).number("milliseconds", song.milliseconds);
    json.number("bit_rate", song.bitRate).number("sample_rate", song.sampleRate).number("bytes", song.bytes);
    if (song.isTrack())
        json.text("persistent_id", identifier(song));
    return json;
}

Json JsonOutput::song(const SongFile& song)
{
    Json json = shortSong(song);
    json.text("album", song.album).text("genre", song.genre);
    json.number("year", std::uint64_t(qMax(song.year, 0)))
        .number("track", std::uint64_t(qMax(song.track, 0)));
    if (!song.isTrack())
        json.number("cover_bytes", song.coverBytes);
    std::vector<std::string> missing;
    for (const QString& field :
         Classification::missingFields(song.title, song.artist, song.album, song.genre))
        missing.push_back(Json::quoted(field.toStdString()));
    return json.value("missing", Json::list(missing));
}
