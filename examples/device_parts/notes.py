"""The classes of the example app Notes and of its framework."""

from device_parts import objc

LIBRARIES = (
    "/usr/lib/libobjc.A.dylib",
    "/System/Library/Frameworks/UIKit.framework/UIKit",
    "/System/Library/Frameworks/Foundation.framework/Foundation",
)
OBJC, UIKIT, KIT = 1, 2, 4  # the framework follows LIBRARIES
TITLE_TYPES = {"title": "@16@0:8", "setTitle:": "v24@0:8@16"}


def kit():
    """The framework NotesKit."""
    root = objc.Imported("NSObject", OBJC)
    note = objc.Class(
        "Note",
        root,
        {
            **TITLE_TYPES,
            "body": "@16@0:8",
            "setBody:": "v24@0:8@16",
            "isPinned": "B16@0:8",
            "setPinned:": "v20@0:8B16",
            "copyWithZone:": "@24@0:8^{_NSZone=}16",
        },
        {"noteWithTitle:body:": "@32@0:8@16@24"},
        ("NSCopying",),
    )
    store = objc.Class(
        "NoteStore",
        root,
        {
            "notes": "@16@0:8",
            "noteWithIdentifier:": "@24@0:8@16",
            "saveNote:error:": "B32@0:8@16^@24",
            "deleteNote:completion:": "v32@0:8@16@?24",
        },
        {"sharedStore": "@16@0:8"},
        ("NoteStoring",),
    )
    index = objc.Class("_TtC8NotesKit9NoteIndex", root, {"rangeOf:in:": "{_NSRange=QQ}32@0:8@16@24"})
    return objc.Metadata([note, store, index])


def app():
    """The main program."""
    delegate = objc.Class(
        "AppDelegate",
        objc.Imported("UIResponder", UIKIT),
        {
            "application:didFinishLaunchingWithOptions:": "B32@0:8@16@24",
            "applicationDidBecomeActive:": "v24@0:8@16",
        },
        {},
        ("UIApplicationDelegate",),
    )
    note_list = objc.Class(
        "NoteList",
        objc.Imported("UITableViewController", UIKIT),
        {
            "viewDidLoad": "v16@0:8",
            "title": "@16@0:8",
            "selectedNote": "@16@0:8",
            "showNote:animated:": "v28@0:8@16B24",
            "tableView:numberOfRowsInSection:": "q32@0:8@16q24",
            "frameOfRow:": "{CGRect={CGPoint=dd}{CGSize=dd}}24@0:8q16",
        },
        {"listWithStore:": "@24@0:8@16"},
        ("UISearchResultsUpdating",),
    )
    search = objc.Class("NoteSearch", note_list, {"setQuery:": "v24@0:8@16"})
    locked = objc.Class("LockedNote", objc.Imported("Note", KIT), {"body": "@16@0:8", "unlockWithCode:": "B24@0:8@16"})
    color = objc.Category("Notes", objc.Imported("UIColor", UIKIT), {}, {"notesYellowColor": "@16@0:8"})
    return objc.Metadata([delegate, note_list, search, locked], [color])
