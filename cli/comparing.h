#pragma once

#include "cli/console.h"
#include "cli/order.h"
#include "collection/songlist.h"
#include "collection/songsearch.h"

#include <QVector>

#include <cstdint>
#include <functional>
#include <string>
#include <utility>

/// Finds which songs of a list are duplicates by the rule of an order, with progress where that takes a look
/// into their files.
class Comparing final : private SongSearchListener
{
public:
    /// Who is told of a song that cannot be compared.
    using Failed = std::function<void(const std::string& path, const std::string& reason)>;

    Comparing(const Order& order, Console& console, Failed failed)
        : m_order(order), m_console(console), m_tellFailed(std::move(failed))
    {
    }

    /// None where it was interrupted: of half of the songs nothing can be said.
    QVector<QVector<int>> groupsOf(const SongList& songs);
    /// How many songs could not be compared.
    std::uint64_t failures() const { return m_failures; }

private:
    void failed(int song, const std::string& reason) override;
    void cannotSearch(const std::string& reason) override;
    bool goesOn(int done, int of) override;

    const Order& m_order;
    Console& m_console;
    const Failed m_tellFailed;
    const SongList* m_songs = nullptr;
    int m_done = 0;
    std::uint64_t m_failures = 0;
};
