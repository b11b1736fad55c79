#include "common/skinwords.h"

#include <QFileInfo>
#include <QHash>

namespace {
const QHash<QString, SkinWords::Words>& table()
{
    static const QHash<QString, SkinWords::Words> words = {
        {QStringLiteral("btn_startscan"), {QStringLiteral("Start Scan"), true}},
        {QStringLiteral("add_music"), {QStringLiteral("Add files"), true}},
        {QStringLiteral("button_Scanning"), {QStringLiteral("Scanning"), true}},
        {QStringLiteral("scan_again"), {QStringLiteral("Scan again"), true}},
        {QStringLiteral("button_itunes_music_clean"),
         {QStringLiteral("iTunes clean mode; click for the local clean mode"), false}},
        {QStringLiteral("button_local_music_clean"),
         {QStringLiteral("Local clean mode; click for the iTunes clean mode"), false}},
        {QStringLiteral("button_preview_left"), {QStringLiteral("Show songs as covers"), false}},
        {QStringLiteral("button_preview_right"), {QStringLiteral("Show songs as a table"), false}},
        {QStringLiteral("button_addmore"), {QStringLiteral("Add more"), true}},
        {QStringLiteral("button_open"), {QStringLiteral("Open music files"), true}},
        {QStringLiteral("button_library"), {QStringLiteral("Choose library file…"), true}},
        {QStringLiteral("btn_msg_startscan"), {QStringLiteral("Start Scan"), true}},
        {QStringLiteral("button_addmusic"), {QStringLiteral("Add music"), true}},
        {QStringLiteral("button_ok"), {QStringLiteral("OK"), true}},
        {QStringLiteral("button_cancel"), {QStringLiteral("Cancel"), true}},
        {QStringLiteral("button_continue"), {QStringLiteral("Continue"), true}},
        {QStringLiteral("button_Restart"), {QStringLiteral("Restart"), true}},
        {QStringLiteral("button_Restart_later"), {QStringLiteral("Restart later"), true}},
        {QStringLiteral("button_yes"), {QStringLiteral("Yes"), true}},
        {QStringLiteral("button_no"), {QStringLiteral("No"), true}},
        {QStringLiteral("button_close"), {QStringLiteral("Close"), false}},
        {QStringLiteral("button_edit"), {QStringLiteral("Edit"), true}},
        {QStringLiteral("button_edit_close"), {QStringLiteral("Cancel"), true}},
        {QStringLiteral("btn_identify"), {QStringLiteral("Identify"), true}},
        {QStringLiteral("btn_identifyagain"), {QStringLiteral("Identify again"), true}},
        {QStringLiteral("btn_apply"), {QStringLiteral("Apply"), true}},
        {QStringLiteral("identifying"), {QStringLiteral("Identifying"), true}},
        {QStringLiteral("btn_clearduplicate"), {QStringLiteral("Clear this group"), true}},
        {QStringLiteral("btn_ClearAll"), {QStringLiteral("Clear all groups"), true}},
        {QStringLiteral("btn_checkbox_no"), {QStringLiteral("To be deleted; click to keep"), false}},
        {QStringLiteral("btn_checkbox_yes"), {QStringLiteral("Kept; click to delete"), false}},
        {QStringLiteral("button_play"), {QStringLiteral("Play"), false}},
        {QStringLiteral("button_detail"), {QStringLiteral("Show information"), false}},
        {QStringLiteral("button_search"), {QStringLiteral("Open the folder"), false}},
        {QStringLiteral("button_music_stop"), {QStringLiteral("Pause"), false}},
        {QStringLiteral("button_music_play"), {QStringLiteral("Play"), false}},
    };
    return words;
}
} // namespace

SkinWords::Words SkinWords::of(const QString& picturePath)
{
    return table().value(QFileInfo(picturePath).completeBaseName());
}
