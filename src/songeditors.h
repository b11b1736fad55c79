#pragma once

#include <QStringList>

#include <array>

class QComboBox;
class QLineEdit;
struct QMusicInfo;

/// The editors of a song's texts and numbers, which stay their panel's.
class SongEditors
{
public:
    struct Widgets
    {
        QLineEdit* title;
        QLineEdit* artist;
        QLineEdit* album;
        QLineEdit* year;
        QLineEdit* track;
        QComboBox* genre;
    };
    /// What the editors hold.
    struct Held
    {
        QStringList texts;
        QString genre;
    };

    /// Gives the editors their look, their bounds and the list of genres.
    explicit SongEditors(const Widgets& widgets);

    /// What an edit begins with: the song's own values. Oddity 36: a genre out of the list leaves the
    /// selection as it was; an apply writes that one.
    void show(const QMusicInfo* song);
    /// Whether they hold something else than since then.
    bool isChanged() const;
    bool isGenreChanged() const { return held().genre != m_shown.genre; }

    Held held() const;
    void fill(const Held& held);
    /// Puts what was identified into the editor of a type, a digit. Other types have none.
    void fill(QChar type, const QString& value);

private:
    std::array<QLineEdit*, 5> m_lines; ///< title, artist, album, year, track
    QComboBox* m_genre;
    Held m_shown; ///< by show()
};
