#include "collection/soundgroups.h"

#include "collection/fingerprintindex.h"

#include <QtAlgorithms>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <numeric>
#include <tuple>
#include <utility>
#include <vector>

namespace {
using SoundGroups::Fingerprint;

constexpr int bits = 32;
constexpr int stretch = 64; ///< values that are judged for themselves: eight seconds
constexpr double otherMusic = 0.3;
constexpr std::size_t mostLooked = 64; ///< of the songs that have most in common with one
constexpr std::size_t mostMeetings = 2048;

/// A song beside another one, laid over it so that most values meet.
struct Candidate
{
    int song = 0;
    int shift = 0;
    int hits = 0;
};

/// Songs that belong together; the first one stands for all.
class Circles
{
public:
    explicit Circles(int songs) : m_first(std::size_t(songs))
    {
        std::iota(m_first.begin(), m_first.end(), 0);
    }

    int firstOf(int song)
    {
        while (at(song) != song)
            song = at(song) = at(at(song));
        return song;
    }
    void join(int one, int other)
    {
        const auto [first, later] = std::minmax({firstOf(one), firstOf(other)});
        at(later) = first;
    }

private:
    int& at(int song) { return m_first[std::size_t(song)]; }

    std::vector<int> m_first;
};

/// Songs of about the lengths that are looked at, the shorter ones first, and what tells them by their
/// values.
class Window
{
public:
    struct Heard
    {
        int song;
        quint64 duration;
        Fingerprint fingerprint;
    };

    /// Those that may be like a song of that length, or a longer one, stay.
    void moveTo(quint64 duration)
    {
        const quint64 turn = duration / SoundGroups::mostApart;
        if (turn == m_turn)
            return;
        const bool isNext = turn == m_turn + 1;
        m_turn = turn;
        std::swap(m_before, m_now);
        std::swap(m_heardBefore, m_heard);
        m_now.clear();
        m_heard.clear();
        if (!isNext) {
            m_before.clear();
            m_heardBefore.clear();
        }
    }
    void add(Heard heard)
    {
        m_now.add(int(m_heard.size()), heard.fingerprint);
        m_heard.push_back(std::move(heard));
    }
    template <typename Look>
    void eachLike(const Heard& song, const Look& look) const
    {
        lookIn(m_now, m_heard, song, look);
        lookIn(m_before, m_heardBefore, song, look);
    }

private:
    template <typename Look>
    static void lookIn(const FingerprintIndex& index, const std::vector<Heard>& heard, const Heard& song,
                       const Look& look);

    quint64 m_turn = 0;
    FingerprintIndex m_now;
    FingerprintIndex m_before;
    std::vector<Heard> m_heard;
    std::vector<Heard> m_heardBefore;
};

/// Each value once, with the place where it is first.
std::vector<std::pair<quint32, int>> valuesOf(const Fingerprint& fingerprint)
{
    std::vector<std::pair<quint32, int>> values;
    values.reserve(std::size_t(fingerprint.size()));
    for (int position = 0; position < fingerprint.size(); ++position)
        values.emplace_back(fingerprint.at(position), position);
    std::sort(values.begin(), values.end());
    const auto isEqual = [](const auto& a, const auto& b) { return a.first == b.first; };
    values.erase(std::unique(values.begin(), values.end(), isEqual), values.end());
    return values;
}

/// The songs of which values meet at one shift, those with most of them first. Where many do, some tell
/// enough.
std::vector<Candidate> candidatesIn(const FingerprintIndex& index, const Fingerprint& fingerprint)
{
    constexpr qint64 shifts = 2 * SoundGroups::mostShift + 1;
    std::vector<qint64> meetings;
    for (const auto& [value, position] : valuesOf(fingerprint)) {
        index.find(value, [&meetings, at = position](int song, int place) {
            const int shift = at - place;
            if (std::abs(shift) <= SoundGroups::mostShift)
                meetings.push_back(song * shifts + shift + SoundGroups::mostShift);
        });
        if (meetings.size() > mostMeetings)
            break;
    }
    std::sort(meetings.begin(), meetings.end());
    std::vector<Candidate> found;
    for (auto meeting = meetings.begin(); meeting != meetings.end();) {
        const auto end = std::upper_bound(meeting, meetings.end(), *meeting);
        const Candidate candidate = {int(*meeting / shifts), int(*meeting % shifts) - SoundGroups::mostShift,
                                     int(end - meeting)};
        meeting = end;
        found.push_back(candidate);
    }
    const auto looked = found.begin() + std::ptrdiff_t(std::min(found.size(), mostLooked));
    std::partial_sort(found.begin(), looked, found.end(), [](const Candidate& a, const Candidate& b) {
        return std::make_tuple(-a.hits, -a.song, a.shift) < std::make_tuple(-b.hits, -b.song, b.shift);
    });
    found.erase(looked, found.end());
    return found;
}

template <typename Look>
void Window::lookIn(const FingerprintIndex& index, const std::vector<Heard>& heard, const Heard& song,
                    const Look& look)
{
    for (const Candidate& candidate : candidatesIn(index, song.fingerprint)) {
        const Heard& other = heard[std::size_t(candidate.song)];
        if (song.duration - other.duration <= SoundGroups::mostApart)
            look(other, candidate.shift);
    }
}

bool tellsEnough(const Fingerprint& fingerprint)
{
    return fingerprint.size() >= SoundGroups::fewestValues &&
           std::any_of(fingerprint.begin(), fingerprint.end(),
                       [first = fingerprint.first()](quint32 value) { return value != first; });
}

QVector<QVector<int>> groupsOf(Circles& circles, int songs)
{
    std::vector<int> groupOf(std::size_t(songs), -1); // by the first song
    std::vector<int> sizes(std::size_t(songs), 0);
    for (int song = 0; song < songs; ++song)
        ++sizes[std::size_t(circles.firstOf(song))];
    QVector<QVector<int>> groups;
    for (int song = 0; song < songs; ++song) {
        const auto first = std::size_t(circles.firstOf(song));
        if (sizes[first] < 2)
            continue;
        if (groupOf[first] < 0) {
            groupOf[first] = groups.size();
            groups.append(QVector<int>());
        }
        groups[groupOf[first]].append(song);
    }
    return groups;
}
} // namespace

bool SoundGroups::areAlike(const Fingerprint& one, const Fingerprint& other, int shift)
{
    const int begin = std::max(0, shift);
    const int end = std::min(one.size(), other.size() + shift);
    if (end - begin < fewestValues || (end - begin) * 4 < std::max(one.size(), other.size()) * 3)
        return false;
    int apart = 0;
    int apartInStretch = 0;
    for (int position = begin; position < end; ++position) {
        const int differing = int(qPopulationCount(one.at(position) ^ other.at(position - shift)));
        apart += differing;
        apartInStretch += differing;
        if ((position - begin) % stretch == stretch - 1) {
            if (apartInStretch > stretch * bits * otherMusic)
                return false;
            apartInStretch = 0;
        }
    }
    return apart <= (end - begin) * bits * mostBitsApart;
}

QVector<QVector<int>> SoundGroups::find(const QList<quint64>& durations,
                                        const std::function<Fingerprint(int song)>& fingerprintOf)
{
    std::vector<int> order(std::size_t(durations.size()));
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [&durations](int a, int b) { return durations.at(a) < durations.at(b); });
    Circles circles(durations.size());
    Window window;
    for (const int song : order) {
        if (durations.at(song) == 0)
            continue;
        Window::Heard heard = {song, durations.at(song), fingerprintOf(song)};
        if (!tellsEnough(heard.fingerprint))
            continue;
        window.moveTo(heard.duration);
        window.eachLike(heard, [&](const Window::Heard& other, int shift) {
            if (circles.firstOf(song) != circles.firstOf(other.song) &&
                areAlike(heard.fingerprint, other.fingerprint, shift))
                circles.join(song, other.song);
        });
        window.add(std::move(heard));
    }
    return groupsOf(circles, durations.size());
}
