// Cleans, edits and takes back without end, for the test that kills it:
//     history_changer FOLDER FILES STATE_FOLDER SEED
// The files are named "0" to FILES - 1, and four in a row are copies of one song. Says each step that it
// made, and each that it took back, in a line.
#include "collection/cleaningplan.h"
#include "collection/history.h"
#include "plaintags.h"

#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace {
constexpr int copiesOfASong = 4;

class Changer
{
public:
    Changer(const std::string& folder, int files, const std::string& state, unsigned seed)
        : m_folder(folder), m_files(files), m_history(state), m_random(seed)
    {
    }

    bool clean()
    {
        QVector<QVector<SongCopy>> groups;
        for (int first = 0; first < m_files; first += copiesOfASong) {
            QVector<SongCopy> group;
            for (int i = first; i < first + copiesOfASong; ++i)
                group.append({at(i), FileState::ofEntry(at(i)), {}});
            groups.append(group);
        }
        QString reason;
        const std::unique_ptr<ChangeStep> step = m_history.begin("clean", reason);
        return step &&
               CleaningPlan(groups, {})
                   .carryOut([&step](const std::string& path,
                                     const FileState& state) { return step->moveToTrash(path, state); },
                             [](const CleaningPlan::Decision&, const QString&) {}, [](int) { return true; });
    }
    bool edit()
    {
        QString reason;
        const std::unique_ptr<ChangeStep> step = m_history.begin("tag", reason);
        for (int i = 0; step && i < m_files / 4; ++i) {
            TagTexts change;
            change.texts.insert("title", QString::number(qulonglong(m_random())));
            change.picture = QByteArray::number(qulonglong(m_random()));
            ChangeStep::Edited edited = ChangeStep::Edited::No;
            step->edit(at(int(m_random() % unsigned(m_files))), change, m_tags, edited);
        }
        return bool(step);
    }
    /// Steps of runs that were killed are taken back in their turn, too.
    bool takeBack()
    {
        const StepReturn::Result result =
            m_history.takeBack(std::nullopt, m_tags, [](int, int) { return true; });
        for (const StepReturn::Told& told : result.failed)
            std::fprintf(stderr, "%s: %s\n", told.path.c_str(), qUtf8Printable(told.reason));
        return result.failed.empty();
    }
    bool goesOn() { return m_random() % 3 != 0; }

private:
    std::string at(int file) const { return m_folder + '/' + std::to_string(file); }

    const std::string m_folder;
    const int m_files;
    const History m_history;
    PlainTags m_tags;
    std::mt19937 m_random;
};
} // namespace

int main(int argc, char* argv[])
{
    if (argc != 5)
        return 2;
    setvbuf(stdout, nullptr, _IOLBF, 0);
    Changer changer(argv[1], std::stoi(argv[2]), argv[3], unsigned(std::stoul(argv[4])));
    for (;;) {
        const bool cleans = changer.goesOn();
        if (!(cleans ? changer.clean() : changer.edit()))
            return 1;
        std::puts(cleans ? "cleaned" : "edited");
        while (changer.goesOn()) {
            if (!changer.takeBack())
                return 1;
            std::puts("taken back");
        }
    }
}
