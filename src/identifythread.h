#pragma once

#include <QStringList>
#include <QThread>

#include <mutex>

class IAudioIdentifier;
struct TagItem;

/// Identifies one music file online, on a thread of its own. Results come by signals, queued to the thread
/// that this object lives in.
class IdentifyThread : public QThread
{
    Q_OBJECT

public:
    explicit IdentifyThread(QObject* parent = nullptr);
    /// Cancels what runs and waits for its end.
    ~IdentifyThread() override;

    /// Names the file; before start().
    void ReturnIdentifyInfo(const QString& path) { m_strFilePath = path; }
    /// Ends the identification with a failure within a moment, also one that is about to start. GUI thread.
    void CloseTheIdentifier();
    /// Whether CloseTheIdentifier() was called.
    bool isCancelled() const;
    /// How the last run ended (IdentifyStatus).
    int status() const;
    /// Whether there was a key to identify by sound with.
    bool hasKey() const;

signals:
    /// One text for each item found: the item's type as one digit, and its value.
    void emitReturnIdentifyInfo(QStringList info);
    /// The file of the cover found.
    void emitReturnIdentifyCover(QString path);
    void emitFailToIdentify();

protected:
    void run() override;

private:
    void identify();
    bool prepare();
    void noteEnd(int status, bool hasKey);
    QStringList takeItems();
    void takeCover(const TagItem& item);

    QString m_strFilePath;
    mutable std::mutex m_mutex;
    IAudioIdentifier* m_pIdentifier = nullptr; ///< made by the first run; guarded by the mutex
    bool m_bCancelled = false;                 ///< guarded by the mutex
    int m_nStatus = 0;                         ///< guarded by the mutex
    bool m_bHasKey = false;                    ///< guarded by the mutex
};
