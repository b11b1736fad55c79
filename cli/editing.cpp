#include "cli/editing.h"

#include "base/newfile.h"
#include "cli/exitcode.h"
#include "cli/figures.h"
#include "cli/interruption.h"
#include "cli/jsonoutput.h"
#include "cli/pathlist.h"
#include "cli/report.h"
#include "cli/saving.h"
#include "collection/coretags.h"
#include "collection/history.h"
#include "collection/songfile.h"

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace {
/// What is to be changed in one song; `whyNot` when its name does not say it.
TagTexts editOf(const Order& order, const std::string& path, QString& whyNot)
{
    TagTexts edit = order.edit;
    if (order.fromName.isEmpty())
        return edit;
    const QMap<QString, QString> texts = order.fromName.read(path);
    if (texts.isEmpty())
        whyNot = QStringLiteral("its name is not like the pattern");
    for (auto text = texts.begin(); text != texts.end(); ++text)
        if (!edit.texts.contains(text.key())) // what is named for all goes before
            edit.texts.insert(text.key(), text.value());
    return edit;
}

/// Saves files one after the other, and tells of each.
class Tagging
{
public:
    Tagging(const Order& order, Console& console, ChangeStep& step)
        : m_order(order), m_console(console), m_json(order.form, console), m_step(step)
    {
    }

    int run()
    {
        const bool isText = m_order.form == Order::Form::Text;
        if (!isText)
            m_json.begin("tag", "songs");
        const std::string wrongList = PathList::read(m_order, [this](const std::string& path) {
            if (!Interruption::hasCome())
                take(path);
            return !Interruption::hasCome();
        });
        if (isText)
            sayCounts();
        else
            writeCounts();
        if (!wrongList.empty())
            m_console.complain("--files-from: " + wrongList);
        if (!m_console.finish() || !wrongList.empty())
            return ExitCode::failed;
        if (Interruption::hasCome())
            return ExitCode::ended;
        return m_tally.failed > 0 ? ExitCode::failed : ExitCode::done;
    }

private:
    void take(const std::string& path)
    {
        ChangeStep::Edited edited = ChangeStep::Edited::No;
        const QString whyNot = save(path, edited);
        if (edited == ChangeStep::Edited::Yes)
            saved(path);
        else if (whyNot.isEmpty())
            ++m_unchanged;
        if (!whyNot.isEmpty())
            failed(path, whyNot.toStdString());
        m_console.progress(m_tally.songs + m_tally.failed + m_unchanged,
                           [this] { return m_order.pathsFrom.empty() ? m_order.paths.size() : 0; });
    }
    QString save(const std::string& path, ChangeStep::Edited& edited)
    {
        QString whyNot;
        const TagTexts edit = editOf(m_order, path, whyNot);
        return whyNot.isEmpty() ? Saving::edit(m_step, path, edit, edited) : whyNot;
    }
    void saved(const std::string& path)
    {
        ++m_tally.songs;
        if (m_order.form == Order::Form::Text) {
            if (m_order.isVerbose)
                m_console.writeLine(m_console.shown(path) + ": saved");
            return;
        }
        Json json;
        m_json.item("song", json.path("path", path));
    }
    void sayCounts()
    {
        std::string line = Figures::count(m_tally.songs, "song", "songs") + " saved";
        if (m_unchanged > 0)
            line += ", " + Figures::count(m_unchanged) + " as wanted before";
        if (!m_step.isEmpty())
            line += "; melodrift-cli undo " + std::to_string(m_step.number()) + " takes it back";
        m_console.say(line);
    }
    void failed(const std::string& path, const std::string& reason)
    {
        ++m_tally.failed;
        m_console.complain(m_console.shown(path) + ": " + reason);
        if (m_order.form != Order::Form::Text)
            m_json.failed(path, reason);
    }
    void writeCounts()
    {
        Json counts;
        counts.number("songs", m_tally.songs).number("failed", m_tally.failed);
        counts.number("unchanged", m_unchanged);
        if (!m_step.isEmpty())
            counts.number("step", std::uint64_t(m_step.number()));
        m_json.end(counts, Interruption::hasCome());
    }

    const Order& m_order;
    Console& m_console;
    JsonOutput m_json;
    ChangeStep& m_step;
    Tally m_tally;
    std::uint64_t m_unchanged = 0;
};

/// A file that programs make is for all whom the user lets read his files.
void giveOrdinaryRights(std::FILE* file)
{
#ifndef _WIN32
    const mode_t mask = ::umask(0);
    ::umask(mask);
    (void)::fchmod(::fileno(file), 0666 & ~mask);
#else
    (void)file;
#endif
}

/// A whole file of these bytes, or none; why not, or empty.
std::string writeFile(const std::string& path, const QByteArray& bytes, bool replaces)
{
    base::Failure failure;
    base::FileState state;
    const bool isThere = base::stateOf(path, state);
    if (isThere && !replaces)
        return "there is such a file already; --force replaces it";
    const std::unique_ptr<base::NewFile> file =
        isThere ? base::NewFile::beside(base::realPath(path), base::NewFile::Content::Empty, failure)
                : base::NewFile::forName(path, failure);
    if (!file)
        return failure.text;
    const auto size = std::size_t(bytes.size());
    if (base::writeAt(file->file(), 0, bytes.constData(), size) != size)
        return base::systemFailure().text;
    if (!isThere)
        giveOrdinaryRights(file->file());
    switch (isThere ? file->replaceOriginal(failure) : file->takeFreeName(path, failure)) {
    case base::NewFile::Taking::Done:
        return std::string();
    case base::NewFile::Taking::NameTaken:
        return "there is such a file already; --force replaces it";
    default:
        return failure.text;
    }
}
} // namespace

int Editing::tag(const Order& order, Console& console)
{
    QString whyNot;
    const std::unique_ptr<ChangeStep> step = History(History::usersFolder()).begin(order.words, whyNot);
    if (step)
        return Tagging(order, console, *step).run();
    console.complain(whyNot.toStdString());
    return ExitCode::failed;
}

int Editing::saveCover(const Order& order, Console& console)
{
    const std::string& path = order.paths.front();
    const std::string name = console.shown(path);
    const SongFile song = SongFileReader().read(path);
    TagTexts held;
    if (song.isRead())
        CoreTags().read(path, held);
    const QByteArray cover = held.picture.value_or(QByteArray());
    if (cover.isEmpty()) {
        console.complain(name + ": " + (song.isRead() ? "it has no cover" : song.whyNot));
        return ExitCode::failed;
    }
    if (order.coverFile == "-") {
        console.write(cover.toStdString());
        return console.finish() ? ExitCode::done : ExitCode::failed;
    }
    const std::string whyNot = writeFile(order.coverFile, cover, order.replaces);
    if (!whyNot.empty()) {
        console.complain(console.shown(order.coverFile) + ": " + whyNot);
        return ExitCode::failed;
    }
    console.say(console.shown(order.coverFile) + ": " + Figures::size(std::uint64_t(cover.size())));
    return ExitCode::done;
}
