#pragma once

#include <QtGlobal>
#include <QVector>

#include <functional>
#include <vector>

/// Which songs have a value in their fingerprints, and where. One thread at a time.
class FingerprintIndex
{
public:
    /// Of songs that share a value only so many are told, those that were added last: it is no mark of a
    /// sound.
    static constexpr int mostOfAValue = 16;

    /// Where its fingerprint has each of its values first. Songs have numbers of their own.
    void add(int song, const QVector<quint32>& fingerprint);
    using Tell = std::function<void(int song, int position)>;
    void find(quint32 value, const Tell& tell) const;
    void clear();

private:
    struct Entry
    {
        quint32 value;
        int song;
        int position;
        int next; ///< that was added before, of the same slot; -1 for none
    };

    static std::size_t hashOf(quint32 value)
    {
        return std::size_t(value * quint64(0x9E3779B97F4A7C15u) >> 32);
    }
    void grow();

    std::vector<Entry> m_entries;
    std::vector<int>
        m_slots; ///< the entry added last; -1 for none. A power of two of them, at least as many as entries
};
