#include "classification.h"

#include <QHash>

#include <vector>

namespace {
constexpr int none = -1;

/// The positions of one title, as a chain through all positions.
struct TitleChain
{
    int last = none;
    int count = 0;
    bool opened = false;
};
} // namespace

QVector<QVector<int>> Classification::groupDuplicates(const QStringList& titles,
                                                      const QList<quint64>& durations)
{
    const int songs = titles.size();
    QHash<QString, int> chainOfTitle;
    QHash<quint64, int> durationCount;
    chainOfTitle.reserve(songs);
    durationCount.reserve(songs);
    std::vector<TitleChain> chains;
    std::vector<int> chainOf(songs, none);
    std::vector<int> next(songs, none);
    for (int i = 0; i < songs; ++i) {
        ++durationCount[durations.at(i)];
        if (titles.at(i).isEmpty())
            continue;
        int& chain = chainOfTitle[titles.at(i)];
        if (chain == 0) { // new in the hash; chains are numbered from 1 there
            chains.emplace_back();
            chain = int(chains.size());
        }
        chainOf[i] = chain - 1;
        TitleChain& same = chains[chain - 1];
        if (same.last != none)
            next[same.last] = i;
        same.last = i;
        ++same.count;
    }

    QVector<QVector<int>> groups;
    for (int i = 0; i < songs; ++i) {
        if (chainOf[i] == none)
            continue;
        TitleChain& same = chains[chainOf[i]];
        if (same.opened || same.count < 2 || durations.at(i) == 0 || durationCount.value(durations.at(i)) < 2)
            continue;
        same.opened = true;
        // Earlier songs of the title counted, but only later ones join: a group can be its opener alone.
        QVector<int> group;
        for (int member = i; member != none; member = next[member])
            group.append(member);
        groups.append(group);
    }
    return groups;
}
