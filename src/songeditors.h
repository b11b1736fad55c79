#pragma once

#include <QStringList>

#include <array>

class QComboBox;
class QLineEdit;
class QWidget;
struct QMusicInfo;
struct SongEdit;

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

    /// What an edit of the song begins with: its own values.
    static Held of(const QMusicInfo* song);
    /// Fills the editors with that. Oddity 36: a genre out of the list leaves the selection as it was; an
    /// apply writes that one.
    void show(const QMusicInfo* song);
    /// Whether they hold something else than since then.
    bool isChanged() const;
    bool isGenreChanged() const { return held().genre != m_shown.genre; }
    /// Whether the widget is one of these and the user changed what it holds.
    bool isChangedIn(const QWidget* widget) const;
    void setVisible(bool visible);

    Held held() const;
    /// The same as an edit, to which the cover is to be added.
    SongEdit edit() const;
    void fill(const Held& held);
    /// Puts what was identified into the editor of a type, a digit. Other types have none.
    void fill(QChar type, const QString& value);

private:
    std::array<QLineEdit*, 5> m_lines; ///< title, artist, album, year, track
    QComboBox* m_genre;
    Held m_shown; ///< by show()
};
