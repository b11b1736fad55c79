#include "pathlistwindow.h"

#include "common/screenplace.h"
#include "common/style.h"

#include <QKeyEvent>
#include <QPlainTextEdit>
#include <QVBoxLayout>

PathListWindow::PathListWindow(const QStringList& lines, QWidget* parent) : QWidget(parent, Qt::Window)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QStringLiteral("Melodrift"));
    auto* list = new QPlainTextEdit(lines.join(QLatin1Char('\n')), this);
    list->setObjectName(QStringLiteral("m_list"));
    list->setReadOnly(true);
    list->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    list->setLineWrapMode(QPlainTextEdit::NoWrap);
    list->setFrameShape(QFrame::NoFrame);
    list->setFont(Style::font(12));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->addWidget(list);
    resize(720, 360);
}

void PathListWindow::open(QWidget& over, const QStringList& lines)
{
    auto* window = new PathListWindow(lines, &over);
    ScreenPlace::putOver(*window, window->rect(), *over.window());
    window->show();
}

void PathListWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}
