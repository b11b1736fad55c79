#include "songlabels.h"

#include "common/retractlabel.h"

void SongLabels::show(const SongEditors::Held& held)
{
    for (size_t i = 0; i < m_texts.size(); ++i)
        m_texts[i]->setText(held.texts.value(int(i)));
    m_genre->setText(held.genre);
}

void SongLabels::setVisible(bool visible)
{
    for (RetractLabel* label : m_texts)
        label->setVisible(visible);
    m_genre->setVisible(visible);
}
