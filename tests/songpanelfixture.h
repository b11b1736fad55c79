#pragma once

#include "audiocore/tagitem.h"
#include "audiofile.h"
#include "common/qimagebutton.h"
#include "common/qimagewidget.h"
#include "common/retractlabel.h"
#include "fixtures.h"
#include "guidriver.h"
#include "musicdetailedinfowidget.h"
#include "songfixtures.h"
#include "startup.h"

#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QtTest>

/// The panel of one song, showing a local song on a real file.
class SongPanelFixture : public QObject
{
public:
    static void initMain()
    {
        Startup::beforeApplication();
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    }

protected:
    void start();
    void prepare();
    void clear();

    template <typename T>
    T* child(const char* name) const
    {
        return m_panel->findChild<T*>(name);
    }
    QString shown(const char* label) const { return child<RetractLabel>(label)->getName(); }
    QString typed(const char* editor) const { return child<QLineEdit>(editor)->text(); }
    void type(const char* editor, const QString& text) const;
    void click(const char* button) const { QTest::mouseClick(child<QImageButton>(button), Qt::LeftButton); }
    bool editing() const;
    QString picture(const QString& name, const QColor& colour) const;
    void choose(const QString& picture);

    QTemporaryDir m_folder;
    std::unique_ptr<Fixtures::ModeGuard> m_mode;
    std::unique_ptr<QMusicInfo> m_song;
    std::unique_ptr<MusicDetailedInfoWidget> m_panel;
    std::unique_ptr<DialogDriver> m_dialogs;
};

inline void SongPanelFixture::start()
{
    Startup::afterApplication();
    Fixtures::genericCover();
}

/// A local song on a real file, shown by the panel.
inline void SongPanelFixture::prepare()
{
    m_mode = std::make_unique<Fixtures::ModeGuard>(true);
    m_dialogs = std::make_unique<DialogDriver>();
    const QString path = Fixtures::copyTone("mp3", m_folder.path());
    const QByteArray cover = Fixtures::jpeg(40, 40, 3);
    AudioFile::write(path,
                     {{TAG_TITLE, "Harbour"},
                      {TAG_ARTIST, "Ida"},
                      {TAG_ALBUM, "Lanterns"},
                      {TAG_GENRE, "Pop"},
                      {TAG_YEAR, "2012"},
                      {TAG_TRACK, "4"}},
                     &cover);
    m_song = std::make_unique<QMusicInfo>();
    m_song->localInfo = std::make_unique<LocalMusicInfo>();
    LocalMusicInfo& local = *m_song->localInfo;
    local.filePath = path;
    local.title = QStringLiteral("Harbour");
    local.artist = QStringLiteral("Ida");
    local.album = QStringLiteral("Lanterns");
    local.genre = QStringLiteral("Pop");
    local.year = 2012;
    local.trackNumber = 4;
    local.coverPath = Fixtures::saveBytes(cover, m_folder.filePath("cover"));
    m_panel = std::make_unique<MusicDetailedInfoWidget>();
    m_panel->resize(330, 572);
    m_panel->SetMusicDetailedInfo(m_song.get());
    m_panel->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_panel.get(), patience));
}

inline void SongPanelFixture::clear()
{
    m_panel.reset();
    m_song.reset();
    m_dialogs.reset();
    m_mode.reset();
}

inline bool SongPanelFixture::editing() const
{
    const bool apply = child<QImageButton>("m_btnApply")->isVisible();
    for (const char* button : {"m_btnEdit", "m_btnIdentify"})
        if (child<QImageButton>(button)->isVisible() == apply)
            qFatal("both modes at once: %s", button);
    if (child<QImageButton>("m_btnCancel")->isVisible() != apply)
        qFatal("both modes at once");
    for (const RetractLabel* label : m_panel->findChildren<RetractLabel*>())
        if (label->isVisible() == apply)
            qFatal("%s is wrong", qPrintable(label->objectName()));
    for (const QLineEdit* editor : m_panel->findChildren<QLineEdit*>())
        if (editor->isVisible() != apply)
            qFatal("%s is wrong", qPrintable(editor->objectName()));
    if (child<QComboBox>("m_comboGenre")->isVisible() != apply)
        qFatal("the combo is wrong");
    return apply;
}

inline void SongPanelFixture::type(const char* editor, const QString& text) const
{
    auto* line = child<QLineEdit>(editor);
    line->setFocus();
    line->selectAll();
    QTest::keyClick(line, Qt::Key_Delete);
    QTest::keyClicks(line, text);
}

inline QString SongPanelFixture::picture(const QString& name, const QColor& colour) const
{
    return Fixtures::savePicture(Fixtures::plain(30, 30, colour), m_folder.filePath(name));
}

inline void SongPanelFixture::choose(const QString& picture)
{
    m_dialogs->expect([picture](QWidget* dialog) {
        auto* chooser = qobject_cast<QFileDialog*>(dialog);
        QCOMPARE(chooser->windowTitle(), QStringLiteral("Open File"));
        QCOMPARE(chooser->nameFilters(), QStringList("Images(*.png *.xpm *.jpg)"));
        dialog->findChild<QLineEdit*>("fileNameEdit")->setText(picture);
        QMetaObject::invokeMethod(dialog, "accept");
    });
    QTest::mouseClick(child<QImageWidget>("currentImgWidget"), Qt::LeftButton);
}
