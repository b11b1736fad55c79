#pragma once

#include <QObject>

/// Whether the user works by keys, or by the mouse: by whichever was pressed last, modifiers aside. What
/// shows where keys go does so for the former. GUI thread only; needs the application object.
class KeyUse : public QObject
{
    Q_OBJECT

public:
    static KeyUse& instance();

    bool leads() const { return m_leads; }

signals:
    void changed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    KeyUse();

    bool m_leads = false;
};
