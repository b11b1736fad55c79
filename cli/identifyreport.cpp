#include "cli/asking.h"
#include "cli/figures.h"
#include "cli/interruption.h"
#include "cli/report.h"
#include "cli/saving.h"
#include "collection/classification.h"
#include "collection/coretags.h"
#include "collection/history.h"
#include "collection/identificationtext.h"
#include "collection/tagproposal.h"

#include <QSet>

namespace {
/// A song that is known, with what it holds and what would become of it.
struct Known
{
    std::string path;
    FoundSong found;
    TagTexts held;
    TagProposal proposal;
    std::string noCover; ///< why the services' cover could not be had
};

/// What a line of the log says behind these words; empty where they are not in it.
std::string behind(const std::string& line, const std::string& words)
{
    const std::size_t at = line.find(words);
    return at == std::string::npos ? std::string() : line.substr(at + words.size());
}

std::string remark(const std::string& text)
{
    return text.empty() ? text : " (" + text + ")";
}

std::string sizeOf(int bytes)
{
    return bytes > 0 ? Figures::size(std::uint64_t(bytes)) : std::string();
}

/// Whether nothing could be filled in.
bool isComplete(const SongFile& song)
{
    return !Classification::isUndefined(song.title, song.artist, song.album, song.genre) && song.year > 0 &&
           song.track > 0 && song.coverBytes > 0;
}

/// The fields and the cover that are known of a song, a line each.
class KnownText
{
public:
    KnownText(const Known& known, Console& console) : m_known(known), m_console(console) {}

    void write() const
    {
        for (const QString& name : TagFields::names()) {
            const std::string after = m_known.found.tags.texts.value(name).toStdString();
            if (!after.empty())
                writeRow(name, m_known.held.texts.value(name).toStdString(), after, changes(name));
        }
        const int after = m_known.found.tags.picture.value_or(QByteArray()).size();
        const int before = m_known.held.picture.value_or(QByteArray()).size();
        const QString name = QStringLiteral("cover");
        if (after > 0)
            writeRow(name, sizeOf(before), sizeOf(after), m_known.proposal.cover().changes);
        else if (!m_known.noCover.empty())
            writeLine(name, "could not be had" + remark(m_console.shown(m_known.noCover)));
    }

private:
    bool changes(const QString& name) const
    {
        for (const TagProposal::Field& field : m_known.proposal.fields())
            if (field.name == name)
                return true;
        return false;
    }
    void writeLine(const QString& name, const std::string& text) const
    {
        m_console.writeLine("  " + name.leftJustified(10).toStdString() + text);
    }
    void writeRow(const QString& name, const std::string& before, const std::string& after,
                  bool changes) const
    {
        std::string text = before.empty() ? "-" : m_console.shown(before);
        if (changes)
            text += " \u2192 " + m_console.shown(after);
        else if (after != before)
            text += remark("found: " + m_console.shown(after));
        writeLine(name, text);
    }

    const Known& m_known;
    Console& m_console;
};

Json jsonOf(const Known& known)
{
    std::vector<std::string> changes;
    for (const TagProposal::Field& field : known.proposal.fields()) {
        Json change;
        change.text("field", field.name).text("before", field.before).text("after", field.after);
        changes.push_back(change.object());
    }
    const TagProposal::Cover& cover = known.proposal.cover();
    if (cover.changes) {
        Json change;
        change.text("field", std::string("cover")).number("bytes_before", std::uint64_t(cover.bytesBefore));
        changes.push_back(change.number("bytes_after", std::uint64_t(cover.bytesAfter)).object());
    }
    Json found;
    for (const QString& name : TagFields::names())
        found.text(name.toLatin1().constData(), known.found.tags.texts.value(name));
    found.number("cover_bytes", std::uint64_t(known.found.tags.picture.value_or(QByteArray()).size()));
    Json json;
    json.path("path", known.path);
    json.text("match", std::string(known.found.isFoundByTags() ? "tags" : "sound"));
    json.number("score", std::uint64_t(known.found.score)).value("found", found.object());
    return json.value("changes", Json::list(changes));
}

/// What the services know of each song; and then, where that is wanted, its tags become that.
class IdentifyReport final : public Report
{
public:
    IdentifyReport(const Order& order, Console& console)
        : Report(order, console), m_asking([this] { tellWaiting(); })
    {
    }

    void begin() override
    {
        if (!isText())
            m_json.begin("identify", "songs");
        if (m_order.writes && m_order.isAgreed)
            beginStep();
    }
    void song(const SongFile& song) override
    {
        if (m_order.onlyMissing && isComplete(song)) {
            tellComplete(song.path);
            return;
        }
        const Asking::Answer answer = m_asking.ask(song.path);
        if (Interruption::hasCome())
            return;
        m_wantsKey = m_wantsKey || answer.found.wantsKey();
        if (answer.found.isFound())
            take(song.path, answer);
        else if (answer.found.isUnknown())
            tellUnknown(song.path, answer.found.status);
        else
            tellFailure(song.path, answer);
    }
    bool goesOn() const override { return !m_isHopeless; }
    void end(const Tally& tally, bool isInterrupted) override
    {
        if (!m_planned.empty() && !isInterrupted &&
            m_console.asksFor("Type yes to have " + Figures::count(m_planned.size(), "song", "songs") +
                              " written: "))
            carryOut();
        if (isText())
            sayCounts();
        else
            writeCounts(tally, isInterrupted);
        if (m_wantsKey)
            m_console.say(IdentificationText::keyOffer().toStdString());
    }

private:
    void beginStep()
    {
        QString whyNot;
        m_step = History(History::usersFolder()).begin(m_order.words, whyNot);
        m_isHopeless = !m_step;
        if (!m_step)
            failLater(History::usersFolder(), whyNot.toStdString());
    }

    void take(const std::string& path, const Asking::Answer& answer)
    {
        Known known = {path, answer.found, {}, {}, behind(answer.log, "is identified without its picture: ")};
        const QString whyNot = CoreTags().read(path, known.held);
        if (!whyNot.isEmpty()) {
            failLater(path, whyNot.toStdString());
            return;
        }
        if (known.found.tags.picture && keepsPlan()) // which songs of one release share
            known.found.tags.picture = *m_pictures.insert(*known.found.tags.picture);
        known.proposal =
            TagProposal(known.held, known.found.tags,
                        m_order.onlyMissing ? TagProposal::Fill::OnlyMissing : TagProposal::Fill::All);
        ++(known.found.isFoundByTags() ? m_byTags : m_bySound);
        m_toChange += known.proposal.isEmpty() ? 0 : 1;
        tell(known);
    }
    void tell(const Known& known)
    {
        if (isText()) {
            const std::string way =
                known.found.isFoundByTags() ? "by its tags, please check, " : "by its sound, ";
            writeHeading(known.path, way + std::to_string(known.found.score) + " %");
            KnownText(known, m_console).write();
        }
        const bool changes = m_order.writes && !known.proposal.isEmpty();
        const bool isSaved = changes && m_step && save(known.path, known.proposal);
        if (changes && keepsPlan())
            m_planned.push_back({known.path, known.proposal});
        if (!isText())
            m_json.item("song", jsonOf(known).flag("saved", isSaved));
    }
    bool keepsPlan() const { return m_order.writes && !m_order.isAgreed && m_console.canAsk(); }
    void tellUnknown(const std::string& path, int status)
    {
        ++m_unknown;
        note("no-match");
        const std::string reason = IdentificationText::whyNot(status).toStdString();
        if (isText())
            writeHeading(path, "no match: " + reason);
        else
            writeWithoutMatch(path, "none", reason);
    }
    void tellComplete(const std::string& path)
    {
        ++m_complete;
        const std::string reason = "nothing is missing";
        if (!isText())
            writeWithoutMatch(path, "not_asked", reason);
        else if (m_order.isVerbose)
            writeHeading(path, reason);
    }
    void writeWithoutMatch(const std::string& path, const std::string& match, const std::string& reason)
    {
        Json json;
        m_json.item("song", json.path("path", path).text("match", match).text("reason", reason));
    }
    void tellFailure(const std::string& path, const Asking::Answer& answer)
    {
        failLater(path, IdentificationText::whyNot(answer.found.status).toStdString() +
                            remark(m_console.shown(behind(answer.log, "is not identified: "))));
    }
    void writeHeading(const std::string& path, const std::string& words)
    {
        m_console.writeLine(m_console.strong(m_console.shown(path)) + remark(words));
    }

    /// Whether the song was changed.
    bool save(const std::string& path, const TagProposal& proposal)
    {
        TagTexts held;
        QString whyNot = CoreTags().read(path, held);
        ChangeStep::Edited edited = ChangeStep::Edited::No;
        if (whyNot.isEmpty() && !proposal.fits(held))
            whyNot = QStringLiteral("its tags were changed meanwhile");
        if (whyNot.isEmpty())
            whyNot = Saving::edit(*m_step, path, proposal.change(), edited);
        if (!whyNot.isEmpty())
            failLater(path, whyNot.toStdString());
        m_saved += edited == ChangeStep::Edited::Yes ? 1 : 0;
        return edited == ChangeStep::Edited::Yes;
    }
    void carryOut()
    {
        beginStep();
        for (const Planned& planned : m_planned)
            if (m_step && !Interruption::hasCome())
                save(planned.path, planned.proposal);
    }

    void sayCounts()
    {
        const auto count = [](std::uint64_t number) { return Figures::count(number); };
        m_console.say(Figures::count(m_bySound + m_byTags, "song", "songs") + " identified, " +
                      count(m_bySound) + " by sound and " + count(m_byTags) + " by tags; " +
                      count(m_unknown) + " without a match" +
                      (m_complete > 0 ? ", " + count(m_complete) + " not asked for" : std::string()));
        if (m_saved > 0)
            m_console.say(Figures::count(m_saved, "song", "songs") + " saved; melodrift-cli undo " +
                          std::to_string(m_step->number()) + " takes it back");
        else if (m_toChange > 0 && !m_step && !m_isHopeless)
            m_console.say(count(m_toChange) + " to change, and nothing was done; " +
                          (m_order.writes ? "--yes does it" : "--write does it"));
    }
    void writeCounts(const Tally& tally, bool isInterrupted)
    {
        Json counts;
        tally.addTo(counts);
        counts.number("by_sound", m_bySound).number("by_tags", m_byTags).number("no_match", m_unknown);
        counts.number("not_asked", m_complete)
            .number("not_identified", failedLater())
            .number("to_change", m_toChange);
        counts.number("saved", m_saved);
        counts.number("step", m_saved > 0 ? std::uint64_t(m_step->number()) : 0);
        m_json.end(counts, isInterrupted);
    }

    struct Planned
    {
        std::string path;
        TagProposal proposal;
    };

    Asking m_asking;
    std::unique_ptr<ChangeStep> m_step;
    bool m_isHopeless = false; ///< nothing could be written
    bool m_wantsKey = false;
    std::vector<Planned> m_planned; ///< for a yes
    QSet<QByteArray> m_pictures;
    std::uint64_t m_bySound = 0;
    std::uint64_t m_byTags = 0;
    std::uint64_t m_unknown = 0;
    std::uint64_t m_complete = 0; ///< not asked for
    std::uint64_t m_toChange = 0;
    std::uint64_t m_saved = 0;
};
} // namespace

std::unique_ptr<Report> makeIdentifyReport(const Order& order, Console& console)
{
    return std::make_unique<IdentifyReport>(order, console);
}
