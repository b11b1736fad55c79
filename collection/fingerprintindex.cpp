#include "collection/fingerprintindex.h"

#include <algorithm>

void FingerprintIndex::add(int song, const QVector<quint32>& fingerprint)
{
    for (int position = 0; position < fingerprint.size(); ++position) {
        if (m_entries.size() >= m_slots.size())
            grow();
        const quint32 value = fingerprint.at(position);
        int& slot = m_slots[hashOf(value) & (m_slots.size() - 1)];
        bool isKnown = false;
        for (int entry = slot; entry >= 0 && !isKnown && m_entries[std::size_t(entry)].song == song;
             entry = m_entries[std::size_t(entry)].next)
            isKnown = m_entries[std::size_t(entry)].value == value;
        if (isKnown)
            continue;
        m_entries.push_back({value, song, position, slot});
        slot = int(m_entries.size()) - 1;
    }
}

void FingerprintIndex::find(quint32 value, const Tell& tell) const
{
    if (m_slots.empty())
        return;
    int told = 0;
    for (int entry = m_slots[hashOf(value) & (m_slots.size() - 1)]; entry >= 0 && told < mostOfAValue;) {
        const Entry& found = m_entries[std::size_t(entry)];
        if (found.value == value) {
            tell(found.song, found.position);
            ++told;
        }
        entry = found.next;
    }
}

void FingerprintIndex::clear()
{
    m_entries.clear();
    std::fill(m_slots.begin(), m_slots.end(), -1);
}

/// Entries keep their order in each slot.
void FingerprintIndex::grow()
{
    constexpr std::size_t fewest = 4096;
    m_slots.assign(std::max(fewest, m_slots.size() * 2), -1);
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        int& slot = m_slots[hashOf(m_entries[i].value) & (m_slots.size() - 1)];
        m_entries[i].next = slot;
        slot = int(i);
    }
}
