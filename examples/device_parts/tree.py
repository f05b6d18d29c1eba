"""What lies in the example device tree: a dictionary of relative paths and contents."""

import json
import plistlib
import uuid

from device_parts import icon, macho, notes

APPLICATIONS = "Applications"
CONTAINERS = "var/containers/Bundle/Application"
INSTALLED_TWEAKS = "var/mobile/Library/Application Support/Marrowgleam/Installed Tweaks"
CRASH_LOGS = "var/mobile/Library/Logs/CrashReporter"
PORTRAIT = "UIInterfaceOrientationPortrait"
LANDSCAPE = "UIInterfaceOrientationLandscapeLeft"


def _uuid(text):
    """The same every time for a text."""
    return str(uuid.uuid5(uuid.NAMESPACE_URL, "device/" + text)).upper()


def _container(bundle_id, folder):
    return f"{CONTAINERS}/{_uuid(bundle_id)}/{folder}.app/"


def _info(bundle_id, executable, **more):
    info = {
        "CFBundleExecutable": executable,
        "CFBundleIdentifier": bundle_id,
        "CFBundleVersion": "1",
        "MinimumOSVersion": "14.0",
        "UIDeviceFamily": [1],
    }
    info.update(more)
    return info


def _binary(value):
    return plistlib.dumps(value, fmt=plistlib.FMT_BINARY)


def _primary(*names):
    return {"CFBundlePrimaryIcon": {"CFBundleIconFiles": list(names)}}


def _notes():
    """An app of the store: binary lists, icons for both devices, an extension, a framework, a helper, a bundle."""
    app = _container("com.example.notes", "Notes")
    blue, white = (46, 110, 220), (255, 255, 255)
    info = _info(
        "com.example.notes",
        "Notes",
        CFBundleDisplayName="Notes",
        CFBundleShortVersionString="1.4",
        CFBundleIcons=_primary("AppIcon60x60"),
        UIDeviceFamily=[1, 2],
        UISupportedInterfaceOrientations=[PORTRAIT, LANDSCAPE],
        **{"CFBundleIcons~ipad": _primary("AppIcon60x60", "AppIcon76x76")},
    )
    kit = "@rpath/NotesKit.framework/NotesKit"
    return {
        app + "Info.plist": _binary(info),
        app + "Notes": macho.fat(
            macho.EXECUTE,
            libraries=[*notes.LIBRARIES, kit],
            run_paths=["@executable_path/Frameworks"],
            metadata=notes.app(),
        ),
        app + "NotesHelper": macho.thin(macho.EXECUTE),
        app + "AppIcon60x60@2x.png": icon.cgbi(120, 120, blue, white),
        app + "AppIcon60x60@3x.png": icon.cgbi(180, 180, blue, white),
        app + "AppIcon76x76~ipad.png": icon.cgbi(76, 76, blue, white),
        app + "AppIcon76x76@2x~ipad.png": icon.cgbi(152, 152, blue, white),
        app + "Frameworks/NotesKit.framework/NotesKit": macho.thin(
            macho.DYLIB, install_name=kit, libraries=notes.LIBRARIES, metadata=notes.kit()
        ),
        app + "Frameworks/NotesKit.framework/Info.plist": _binary(
            {"CFBundleExecutable": "NotesKit", "CFBundleIdentifier": "com.example.notes.kit", "CFBundleVersion": "1"}
        ),
        app + "PlugIns/NotesWidget.appex/NotesWidget": macho.thin(macho.EXECUTE, libraries=[kit]),
        app + "PlugIns/NotesWidget.appex/Info.plist": _binary(
            _info("com.example.notes.widget", "NotesWidget", CFBundleDisplayName="Notes Widget")
        ),
        app + "Spelling.bundle/Spelling": macho.thin(macho.BUNDLE),
    }


def _travel():
    """Wide characters in the name and in paths; an XML list; one icon in the ordinary form is the largest."""
    app = _container("com.example.travel", "旅ノート")
    red, yellow = (214, 64, 69), (255, 214, 102)
    info = _info(
        "com.example.travel",
        "Travel",
        CFBundleDisplayName="旅ノート 🗺️",
        CFBundleShortVersionString="2.0.1",
        CFBundleIconFiles=["Icon.png", "Icon-60"],
    )
    return {
        app + "Info.plist": plistlib.dumps(info),
        app + "Travel": macho.thin(macho.EXECUTE),
        app + "Icon.png": icon.cgbi(57, 57, red, yellow),
        app + "Icon-60@2x.png": icon.png(120, 120, red, yellow),
    }


def _broken():
    """An identifier, but no executable: listed, while its Info cannot be read."""
    app = _container("com.example.broken", "Broken")
    return {app + "Info.plist": plistlib.dumps({"CFBundleIdentifier": "com.example.broken", "CFBundleName": "Broken"})}


def _system_apps():
    """A plain one with the default icon names, one that hides itself, and a service that is never listed."""
    files = {}
    green, gray, white = (58, 158, 92), (120, 120, 128), (255, 255, 255)
    for folder, info, tile in (
        ("Almanac", _info("com.example.almanac", "Almanac", CFBundleName="Almanac"), green),
        ("Setup", _info("com.example.setup", "Setup", SBAppTags=["hidden"]), gray),
        ("Share", _info("com.apple.share", "Share"), gray),
    ):
        app = f"{APPLICATIONS}/{folder}.app/"
        files[app + "Info.plist"] = _binary(info)
        files[app + folder] = macho.thin(macho.EXECUTE)
        files[app + "Icon-60@2x.png"] = icon.cgbi(120, 120, tile, white)
    return files


def _installed_tweak():
    """The keyed archive that records the tweak of one app."""
    objects = [
        "$null",
        {
            "$class": plistlib.UID(4),
            "bundleID": plistlib.UID(2),
            "tweakID": plistlib.UID(3),
            "customIconURL": plistlib.UID(0),
        },
        "com.example.notes",
        _uuid("tweak"),
        {"$classname": "TweakInfo", "$classes": ["TweakInfo", "NSObject"]},
    ]
    archive = {
        "$archiver": "NSKeyedArchiver",
        "$version": 100000,
        "$top": {"root": plistlib.UID(1)},
        "$objects": objects,
    }
    return {f"{INSTALLED_TWEAKS}/com.example.notes/TweakInfo.plist": _binary(archive)}


def _crash_log(name, bundle_id):
    head = {"app_name": name, "bundleID": bundle_id, "app_version": "1.4", "bug_type": "309"}
    body = {"procName": name, "bundleInfo": {"CFBundleIdentifier": bundle_id}, "exception": {"type": "EXC_CRASH"}}
    return (json.dumps(head) + "\n" + json.dumps(body, indent=2) + "\n").encode()


def _crash_logs():
    return {
        f"{CRASH_LOGS}/Notes-2024-05-01-101500.ips": _crash_log("Notes", "com.example.notes"),
        f"{CRASH_LOGS}/Notes-2024-05-02-093012.ips": _crash_log("Notes", "com.example.notes"),
        f"{CRASH_LOGS}/Travel-2024-05-03-180059.ips": _crash_log("Travel", "com.example.travel"),
    }


def files():
    """Every file: relative path and contents."""
    parts = (_notes(), _travel(), _broken(), _system_apps(), _installed_tweak(), _crash_logs())
    return {path: contents for part in parts for path, contents in part.items()}
