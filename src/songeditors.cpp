#include "songeditors.h"

#include "audiocore/tagitem.h"
#include "common/style.h"
#include "songs/songediting.h"
#include "songs/songfields.h"

#include <QComboBox>
#include <QIntValidator>
#include <QLineEdit>

#include <algorithm>
#include <limits>

namespace {
/// The numbers' editors take numbers that tags hold.
void boundNumber(QLineEdit* editor)
{
    editor->setValidator(new QIntValidator(1, 9999, editor));
}
} // namespace

SongEditors::SongEditors(const Widgets& widgets)
    : m_lines{widgets.title, widgets.artist, widgets.album, widgets.year, widgets.track},
      m_genre(widgets.genre)
{
    const QFont font = Style::font(10);
    // As tall as the label below it, looking less so.
    const QString look = QStringLiteral("QLineEdit{margin:4px 0;padding:0 5px;border:1px solid %1;"
                                        "border-radius:4px;background:white;color:%2}"
                                        "QLineEdit:focus{border:2px solid %3;padding:0 4px}")
                             .arg(Style::editorLine.name(), Style::ink.name(), Style::editorFocus.name());
    for (QLineEdit* editor : m_lines) {
        editor->setFont(font);
        editor->setStyleSheet(look);
    }
    // A text is handed back as long as it is.
    for (QLineEdit* editor : {widgets.title, widgets.artist, widgets.album})
        editor->setMaxLength(std::numeric_limits<int>::max());
    boundNumber(widgets.year);
    boundNumber(widgets.track);
    m_genre->setFont(font);
    m_genre->addItems(SongEditing::genres());
    m_genre->setStyleSheet(QStringLiteral(
        "QComboBox{background-color:rgb(154,219,251);margin:2px;}"
        "QComboBox:item{background-color:white;color:rgb(122,190,204);font-weight:2px;margin:1px;"
        "height:25px;width:80px;padding-left:40px;}"
        "QComboBox:item:selected{background-color:rgb(212,240,247);}QMenu:icon{left:20px;height:20px}"));
}

SongEditors::Held SongEditors::of(const QMusicInfo* song)
{
    return {{SongFields::title(song), SongFields::artist(song), SongFields::album(song),
             QString::number(SongFields::year(song)), QString::number(SongFields::trackNumber(song))},
            SongFields::genre(song)};
}

void SongEditors::show(const QMusicInfo* song)
{
    fill(of(song));
    m_shown = held();
}

void SongEditors::setVisible(bool visible)
{
    for (QLineEdit* editor : m_lines)
        editor->setVisible(visible);
    m_genre->setVisible(visible);
}

bool SongEditors::isChanged() const
{
    return held().texts != m_shown.texts || isGenreChanged();
}

bool SongEditors::isChangedIn(const QWidget* widget) const
{
    if (widget == m_genre)
        return isGenreChanged();
    const auto editor = std::find(m_lines.begin(), m_lines.end(), widget);
    return editor != m_lines.end() && (*editor)->isModified();
}

SongEditors::Held SongEditors::held() const
{
    Held held;
    for (const QLineEdit* editor : m_lines)
        held.texts.append(editor->text());
    held.genre = m_genre->currentText();
    return held;
}

SongEdit SongEditors::edit() const
{
    const Held typed = held();
    SongEdit edit;
    edit.title = typed.texts.at(0);
    edit.artist = typed.texts.at(1);
    edit.album = typed.texts.at(2);
    edit.year = typed.texts.at(3).toInt();
    edit.trackNumber = typed.texts.at(4).toInt();
    edit.genre = typed.genre;
    edit.genreChosen = isGenreChanged();
    return edit;
}

void SongEditors::fill(const Held& held)
{
    for (size_t i = 0; i < m_lines.size(); ++i) {
        m_lines[i]->setText(held.texts.value(int(i)));
        m_lines[i]->setCursorPosition(0);
    }
    const int genre = m_genre->findText(held.genre, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (genre >= 0)
        m_genre->setCurrentIndex(genre);
}

void SongEditors::fill(QChar type, const QString& value)
{
    const int index = type.digitValue();
    if (index == TAG_GENRE) {
        const QStringList genres = SongEditing::genres();
        const int genre = genres.indexOf(value);
        m_genre->setCurrentIndex(genre >= 0 ? genre : genres.size() - 1); // the last is "Other"
    } else if (index >= TAG_TITLE && index <= TAG_TRACK) {
        QLineEdit* const editor = m_lines[size_t(index < TAG_GENRE ? index : index - 1)];
        editor->setText(value);
        editor->setCursorPosition(0);
    }
}
