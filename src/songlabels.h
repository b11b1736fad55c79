#pragma once

#include "songeditors.h"

#include <array>

class RetractLabel;

/// The labels that show a song's texts and numbers while nobody edits them, and which stay their panel's.
class SongLabels
{
public:
    struct Widgets
    {
        RetractLabel* title;
        RetractLabel* artist;
        RetractLabel* album;
        RetractLabel* year;
        RetractLabel* track;
        RetractLabel* genre;
    };

    explicit SongLabels(const Widgets& widgets)
        : m_texts{widgets.title, widgets.artist, widgets.album, widgets.year, widgets.track},
          m_genre(widgets.genre)
    {
    }

    void show(const SongEditors::Held& held);
    void setVisible(bool visible);

private:
    std::array<RetractLabel*, 5> m_texts; ///< in the order of the editors
    RetractLabel* m_genre;
};
