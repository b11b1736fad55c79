#pragma once

#include "common/messagedialog.h"
#include "common/qimagebutton.h"

#include <QApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QTimer>
#include <QtTest>

/// The second press of a double click whose first one another button took, as the window system tells of it.
inline void pressAsSecond(QWidget* button)
{
    const QPoint middle = button->rect().center();
    QMouseEvent press(QEvent::MouseButtonDblClick, middle, button->mapToGlobal(middle), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(button, &press);
    QTest::mouseRelease(button, Qt::LeftButton, Qt::NoModifier, middle);
}

/// The program's window of a class, to be seen or not; null for none.
template <typename Window>
Window* findWindow()
{
    for (QWidget* window : QApplication::topLevelWidgets())
        if (auto* found = qobject_cast<Window*>(window))
            return found;
    return nullptr;
}

/// Answers the modal dialogs that the program opens, in their order, and remembers what they said.
class DialogDriver : public QObject
{
public:
    using Answer = std::function<void(QWidget*)>;

    DialogDriver()
    {
        m_timer.setInterval(5);
        connect(&m_timer, &QTimer::timeout, this, &DialogDriver::look);
        m_timer.start();
    }

    /// The next dialog gets this answer; without one it is closed.
    void expect(Answer answer) { m_answers.append(std::move(answer)); }
    void expectButton(const char* button)
    {
        expect([button](QWidget* dialog) {
            QTest::mouseClick(dialog->findChild<QImageButton*>(button), Qt::LeftButton);
        });
    }
    /// The texts of the message dialogs so far.
    QStringList texts;

private:
    void look()
    {
        QWidget* dialog = QApplication::activeModalWidget();
        if (!dialog || dialog == m_last || !dialog->isVisible())
            return;
        m_last = dialog;
        if (const auto* content = dialog->findChild<QLabel*>("m_labContent"))
            texts.append(content->text());
        const Answer answer =
            m_answers.isEmpty() ? [](QWidget* open) { open->close(); } : m_answers.takeFirst();
        answer(dialog);
        m_last = nullptr;
    }

    QTimer m_timer;
    QList<Answer> m_answers;
    QWidget* m_last = nullptr;
};
