#!/usr/bin/env python3
"""Uses the program as someone does who hears the screen: by AT-SPI, by names and actions alone.

screenreader.py SCENE FOLDER    says "ready" once it listens, waits for the program, and plays the scene with the files
                                in the folder; what goes wrong is said, and ends it with a failure

Nothing here knows where something stands. What is hidden must not be in the tree at all, so that every walk through it
also fails where something is that cannot be seen.
"""
import contextlib
import os
import sys
import time

import gi
import pyatspi

gi.require_version("GLib", "2.0")
from gi.repository import GLib  # noqa: E402

PATIENCE = 300  # seconds: only what never comes takes so long
WALKED = 100  # items of a list

KEYS = {"Up": 0xff52, "Down": 0xff54, "Home": 0xff50, "End": 0xff57, "space": 0x20}
ALT = 64  # as the keyboard of every X server numbers it

heard = []  # what would be read out, since it was last asked for


def listen():
    def hear(event):
        if event.type == "object:state-changed:focused" and event.detail1:
            heard.append(event.source.name)
        elif event.type == "object:property-change:accessible-name":
            heard.append(event.source.name)

    pyatspi.Registry.registerEventListener(hear, "object:state-changed:focused",
                                           "object:property-change:accessible-name")


def wait(what, condition):
    """The condition's answer, as soon as it is one; None counts as none."""
    context, end = GLib.MainContext.default(), time.monotonic() + PATIENCE
    while True:
        while context.pending():
            context.iteration(False)
        try:
            answer = condition()
        except (GLib.Error, AttributeError, StopIteration):  # something went while it was looked at
            answer = None
        if answer is not None and answer is not False:
            return answer
        if time.monotonic() > end:
            raise AssertionError(f"waited in vain: {what}\n{tree(program())}\nheard: {heard}")
        time.sleep(0.02)


def role_of(part):
    """Newer versions of the library call a push button a button."""
    name = part.getRoleName()
    return "push button" if name == "button" else name


def program():
    desktop = pyatspi.Registry.getDesktop(0)
    for index in range(desktop.childCount):
        found = desktop.getChildAtIndex(index)
        if found and found.name == "Melodrift":
            return found
    return None


def parts(node):
    """All below, what lies on top first."""
    for index in range(min(node.childCount, WALKED)):
        child = node.getChildAtIndex(index)
        if child:
            yield child
            yield from parts(child)


def windows():
    """The newest first."""
    return [window for window in reversed([program().getChildAtIndex(i) for i in range(program().childCount)])
            if window and window.getState().contains(pyatspi.STATE_SHOWING)]


def tree(node, depth=0):
    if not node:
        return "no program"
    lines = ["  " * depth + f"{role_of(node)} {node.name!r} {node.description!r} "
             + " ".join(pyatspi.stateToString(state) for state in node.getState().getStates())]
    return "\n".join(lines + [tree(node.getChildAtIndex(i), depth + 1) for i in range(min(node.childCount, WALKED))])


def look(role, name, where=None):
    """What has this role and a name that begins so; None while there is none."""
    for window in [where] if where else windows():
        for part in [window, *parts(window)]:
            if role_of(part) == role and part.name.startswith(name):
                return part
    return None


def get(role, name, where=None):
    return wait(f"{role} {name!r}", lambda: look(role, name, where))


def gone(role, name):
    wait(f"no {role} {name!r}", lambda: look(role, name) is None)


def can_be_used(part):
    return part.getState().contains(pyatspi.STATE_ENABLED)


def act(part, name="Press"):
    action = part.queryAction()
    names = [action.getName(i) for i in range(action.nActions)]
    assert name in names, f"{part.name!r} has no action {name}: {names}"
    action.doAction(names.index(name))


def key(name):
    pyatspi.Registry.generateKeyboardEvent(KEYS[name], None, pyatspi.KEY_SYM)


@contextlib.contextmanager
def alt_held():
    """Pressed anew before the toolkit has heard of its release, Alt would open the menu."""
    pyatspi.Registry.generateKeyboardEvent(ALT, None, pyatspi.KEY_PRESS)
    yield
    pyatspi.Registry.generateKeyboardEvent(ALT, None, pyatspi.KEY_RELEASE)


def press(name, where=None):
    act(wait(f"a button {name!r}", lambda: (lambda button: button if button and can_be_used(button) else None)(
        look("push button", name, where))))


def type_into(name, text, where=None):
    field = get("text", name, where)
    field.queryEditableText().setTextContents(text)
    assert field.queryText().getText(0, -1) == text


def items(listing):
    return [listing.getChildAtIndex(i).name for i in range(min(listing.childCount, WALKED))]


def shows(name, *expected):
    """A list of this name, with these items."""
    listing = get("list", name)
    wait(f"{name!r} with {expected}", lambda: items(listing) == list(expected))
    return listing


def labels(part):
    return [relation.getTarget(i).name for relation in part.getRelationSet()
            if relation.getRelationType() == pyatspi.RELATION_LABELLED_BY for i in range(relation.getNTargets())]


def said(text):
    return wait(f"the foot says {text!r}",
                lambda: next((bar for window in windows() for bar in parts(window)
                              if role_of(bar) == "status bar" and text in bar.name), None))


def hears(text):
    wait(f"heard {text!r}", lambda: any(text in name for name in heard))
    heard.clear()


def cannot_be_there(part):
    """What is hidden, but for what the toolkit holds ready or is beyond an edge; and what acts and has no name."""
    role = role_of(part)
    held_ready = (role in ("popup menu", "menu item", "list item", "table column header")
                  or part.name == "Empty the field")
    acts = role in ("dialog", "push button", "text", "combo box", "list", "slider", "check box")
    inside_box = role == "list" and role_of(part.parent) == "combo box"
    nameless = acts and not part.name and not inside_box
    return nameless or not (held_ready or part.getState().contains(pyatspi.STATE_SHOWING))


def look_round():
    wait("nothing hidden, all with names",
         lambda: not any(cannot_be_there(part) for window in windows() for part in [window, *parts(window)]))


FERRY = "Midnight Ferry, The Harbour, Night Lines"
LAMP = "Lamplight, The Harbour, Night Lines"


def add_files(folder):
    press("iTunes clean mode")
    get("push button", "Local clean mode")
    press("Add files")
    dialog = get("dialog", "open")
    names = sorted(os.listdir(folder))
    type_into("File name:", " ".join(f'"{os.path.join(folder, name)}"' for name in names), dialog)
    press("Open", dialog)
    gone("dialog", "open")
    question = get("dialog", "")
    look_round()
    press("Start Scan", question)


def scene_workflow(folder):
    look_round()
    get("list", "All songs, 0 songs")
    add_files(folder)
    shows("All songs, 5 songs", FERRY, FERRY, FERRY, LAMP, "nameless.mp3, unknown title, The Harbour, Night Lines")
    look_round()

    press("Undefined songs(1)")
    song = shows("Undefined songs, 1 song", "nameless.mp3, unknown title, The Harbour, Night Lines")
    act(song.getChildAtIndex(0))
    details = get("panel", "Song details")
    look_round()
    press("Edit", details)
    type_into("Title:", "Named", details)
    cover = get("push button", "Cover", details)
    assert cover.description == "click to add cover", cover.description
    for editor in ("Title:", "Artist:", "Album:", "Year:", "Track No:"):
        get("text", editor, details)
    get("combo box", "Pop", details)  # which says what it shows; its label says what it is for
    assert "Genre:" in labels(get("combo box", "Pop", details))
    look_round()
    press("Apply", details)
    said("Saved")
    shows("Undefined songs, 0 songs")

    press("Duplicate songs(1)")
    gone("panel", "Song details")
    group = shows("Duplicate songs, 1 group", f"{FERRY}, 3 songs")
    act(group.getChildAtIndex(0))
    panel = get("panel", "Group of duplicates")
    copies = get("list", "Songs of this group, 3 songs", panel)
    wait("three copies", lambda: [name.split(",")[0] for name in items(copies)] ==
         ["Kept: Midnight Ferry", "To be deleted: Midnight Ferry", "To be deleted: Midnight Ferry"])
    assert all("kilobits per second" in name for name in items(copies)), items(copies)
    look_round()
    press("To be deleted", copies)  # the second copy is kept, too
    wait("two kept", lambda: [name.split(":")[0] for name in items(copies)] == ["Kept", "Kept", "To be deleted"])
    press("Clear this group", panel)
    question = get("dialog", "Melodryft")
    look_round()
    press("OK", question)
    said("trash")
    shows("Duplicate songs, 1 group", f"{FERRY}, 2 songs")
    press("Undo")
    said("back")
    shows("Duplicate songs, 1 group", f"{FERRY}, 3 songs")
    press("All songs(5)")
    shows("All songs, 5 songs", FERRY, FERRY, FERRY, LAMP, "Named, The Harbour, Night Lines")
    look_round()


def scene_announcements(folder):
    add_files(folder)
    songs = get("list", "All songs, 5 songs")
    heard.clear()
    act(songs.getChildAtIndex(3), "SetFocus")
    hears(LAMP)
    wait("the song has the focus", lambda: songs.getChildAtIndex(3).getState().contains(pyatspi.STATE_FOCUSED))
    assert songs.getChildAtIndex(3).getState().contains(pyatspi.STATE_SELECTED)
    key("Up")
    key("Home")
    hears(FERRY)
    key("End")
    hears("nameless.mp3, unknown title")
    type_into("Find songs", "lamp")
    hears("All songs, 1 of 5 songs")
    found = shows("All songs, 1 of 5 songs", LAMP)
    wait("the count", lambda: get("text", "Find songs").description == "1 of 5")
    act(found.getChildAtIndex(0), "SetFocus")
    hears(LAMP)
    act(found.getChildAtIndex(0), "Play")
    slider = get("slider", "Position: ")
    wait("the time", lambda: slider.name.endswith("of 3 seconds"))
    look_round()
    slider.queryValue().currentValue = 0
    wait("the beginning", lambda: slider.name == "Position: 0 seconds of 3 seconds")  # or its end, which goes there

    type_into("Find songs", "")
    press("Show songs as a table")
    look_round()
    act(get("table column header", "Title"))
    shows("All songs, 5 songs", LAMP, FERRY, FERRY, FERRY, "nameless.mp3, unknown title, The Harbour, Night Lines")
    assert get("table column header", "Title").description == "In ascending order"
    press("Show songs as covers")
    press("Duplicate songs(1)")
    groups = shows("Duplicate songs, 1 group", f"{FERRY}, 3 songs")
    act(groups.getChildAtIndex(0), "SetFocus")
    get("list", "Songs of this group, 3 songs")
    heard.clear()
    key("space")
    hears("To be deleted: Midnight Ferry, MP3")
    with alt_held():
        key("Down")
        hears("To be deleted: Midnight Ferry, MP3")
        key("Down")
        hears("To be deleted: Midnight Ferry, M4A")
        key("Up")
        hears("To be deleted: Midnight Ferry, MP3")


def main():
    listen()
    print("ready", flush=True)
    wait("the program", program)
    wait("its window", lambda: look("frame", "Melodrift"))
    globals()[f"scene_{sys.argv[1]}"](sys.argv[2])
    exit_menu = get("menu item", "Exit")
    act(wait("what the menu holds", lambda: next(part for part in parts(exit_menu) if part.name == "Exit")))
    wait("its end", lambda: program() is None)


if __name__ == "__main__":
    main()
