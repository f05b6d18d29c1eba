"""Objective-C classes as compilers lay them out: records and lists of pointers, and the texts that they lead to."""

import dataclasses
import struct

META, ROOT = 1, 2
CLASS, METACLASS = "_OBJC_CLASS_$_", "_OBJC_METACLASS_$_"
HAS_CLASS_PROPERTIES = 0x40  # of categories


@dataclasses.dataclass
class Class:
    """Methods are dictionaries: the types by selector. The superclass is another Class, or one in a library."""

    name: str
    superclass: object
    methods: dict = dataclasses.field(default_factory=dict)
    class_methods: dict = dataclasses.field(default_factory=dict)
    protocols: tuple = ()


@dataclasses.dataclass
class Imported:
    """A class that the library of that number, from 1, defines."""

    name: str
    library: int


@dataclasses.dataclass
class Category:
    name: str
    cls: Imported
    methods: dict = dataclasses.field(default_factory=dict)
    class_methods: dict = dataclasses.field(default_factory=dict)


@dataclasses.dataclass
class Import:
    """What a pointer holds whose target is a symbol of another image."""

    symbol: str
    library: int


class Metadata:
    """The contents of an image's data: `data` with `pointers` into itself or to imports, by their offset, and `sections`."""

    def __init__(self, classes, categories=()):
        self.data = bytearray()
        self.pointers = {}  # by the offset of its place: an offset in the data, a text, or an Import
        self.sections = {}  # by name: offset and size
        self._protocols = {}
        self._records = {}
        self._section("__objc_classlist", 8 * len(classes))
        self._section("__objc_catlist", 8 * len(categories))
        self._section("__objc_imageinfo", 8)
        struct.pack_into("<I", self.data, self.sections["__objc_imageinfo"][0] + 4, HAS_CLASS_PROPERTIES)
        self._section("__objc_data", 80 * len(classes))
        start = len(self.data)
        record = self.sections["__objc_data"][0]
        for number, each in enumerate(classes):
            self._records[each.name] = record + 80 * number
            self.pointers[8 * number] = record + 80 * number
        for each in classes:
            self._class(each)
        for number, each in enumerate(categories):
            self.pointers[self.sections["__objc_catlist"][0] + 8 * number] = self._category(each)
        self.sections["__objc_const"] = (start, len(self.data) - start)

    def texts(self):
        """Every text that a pointer leads to, once."""
        return list(dict.fromkeys(target for target in self.pointers.values() if isinstance(target, str)))

    def _section(self, name, size):
        self.sections[name] = (self._append(b"\0" * size), size)

    def _append(self, contents, pointers=None):
        """Appends a record; `pointers` are the targets by offset in it, None for null."""
        at = len(self.data)
        self.data += contents
        for offset, target in (pointers or {}).items():
            if target is not None:
                self.pointers[at + offset] = target
        return at

    def _superclass(self, cls, prefix):
        if cls is None:
            return None
        if isinstance(cls, Imported):
            return Import(prefix + cls.name, cls.library)
        return self._records[cls.name] + (40 if prefix == METACLASS else 0)

    def _class(self, cls):
        record = self._records[cls.name]
        flags = 0 if cls.superclass else ROOT
        self.pointers[record] = record + 40
        for offset, prefix, extra, methods in ((0, CLASS, 0, cls.methods), (40, METACLASS, META, cls.class_methods)):
            if cls.superclass:
                self.pointers[record + offset + 8] = self._superclass(cls.superclass, prefix)
            lists = {24: cls.name, 32: self._methods(methods), 40: self._protocol_list(cls.protocols)}
            head = struct.pack("<III", flags | extra, 8, 8).ljust(72, b"\0")
            self.pointers[record + offset + 32] = self._append(head, lists)

    def _methods(self, methods):
        if not methods:
            return None
        pointers = {}
        for number, (selector, types) in enumerate(methods.items()):
            pointers[8 + 24 * number] = selector
            pointers[16 + 24 * number] = types
        return self._append(struct.pack("<II", 24, len(methods)) + b"\0" * 24 * len(methods), pointers)

    def _protocol_list(self, names):
        if not names:
            return None
        for name in names:
            if name not in self._protocols:
                record = b"\0" * 64 + struct.pack("<II", 96, 0) + b"\0" * 24
                self._protocols[name] = self._append(record, {8: name})
        pointers = {8 + 8 * number: self._protocols[name] for number, name in enumerate(names)}
        return self._append(struct.pack("<Q", len(names)) + b"\0" * 8 * (len(names) + 1), pointers)

    def _category(self, category):
        lists = {
            0: category.name,
            8: Import(CLASS + category.cls.name, category.cls.library),
            16: self._methods(category.methods),
            24: self._methods(category.class_methods),
        }
        return self._append(b"\0" * 56 + struct.pack("<II", 64, 0), lists)
