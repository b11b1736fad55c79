#pragma once

#include <QFont>
#include <QString>

#include <memory>

class QLabel;
class QWidget;
class SkinLabel;
class SkinMovie;

/// What the header of the window says at its left: the status disc, or the animation of what runs, and the
/// tips beside it. GUI thread only.
class HeaderStatus
{
public:
    struct Widgets
    {
        SkinLabel& disc;
        QLabel& tips;
        const QWidget& behind; ///< begins where the tips have to end
    };

    /// The widgets must outlive it.
    explicit HeaderStatus(const Widgets& widgets);
    ~HeaderStatus();

    /// Of a mode in which nothing was scanned yet.
    void showStart(bool local);
    void showScanning();
    /// The scan is over, whatever came of it.
    void endScanning();
    void showScanned(int undefined, int duplicates);
    /// So many files of so many are read; then endAdding().
    void showAdding(int done, int total);
    /// Says what was said before.
    void endAdding();

    /// The tips take their place in the header, which changes nothing where they stand there already.
    void place();
    /// The room for them changed.
    void fitTips();

private:
    void say(const QString& tips);
    void showPicture(const char* name);
    QFont tipsFont() const;

    Widgets m_widgets;
    const char* m_pPicture = nullptr;          ///< its file name; shown while no animation runs
    std::unique_ptr<SkinMovie> m_pScanMovie;   ///< set while a scan runs
    std::unique_ptr<SkinMovie> m_pAddingMovie; ///< set while files are read
    QString m_strTipsBeforeAdding;
};
