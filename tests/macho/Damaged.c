// Records that cannot be read, next to some that can. Each fault costs its class or method alone.
#include "Records.h"

#define NOWHERE ((const void *)0x7000000000)

static const METHODS(1) good = {24, 1, {{"good", "v16@0:8", 0}}};
static const METHODS(3) partly = {24, 3, {{"kept", "v16@0:8", 0}, {NOWHERE, "v16@0:8", 0}, {"alsoKept", "v16@0:8", 0}}};
static const METHODS(1) untyped = {24, 1, {{"lost", NOWHERE, 0}}};
static const METHODS(1) endless = {24, 0xFFFFFFFF, {{"endless", "v16@0:8", 0}}};
static const METHODS(1) flat = {0, 1, {{"flat", "v16@0:8", 0}}};
static const METHODS(1) cached = {0xC000000C, 1, {{"cached", "v16@0:8", 0}}};

CLASS(Good, "Good", ROOT, 0, &good, 0, 0, 0);
CLASS(Nameless, NOWHERE, 0, &class_Good, &good, 0, 0, 0);
CLASS(Partly, "Partly", 0, &class_Good, &partly, &good, 0, 0);
CLASS(Untyped, "Untyped", 0, &class_Good, &untyped, 0, 0, 0);
CLASS(Endless, "Endless", 0, &class_Good, &endless, 0, 0, 0);
CLASS(Flat, "Flat", 0, &class_Good, &flat, 0, 0, 0);
CLASS(Cached, "Cached", 0, &class_Good, &cached, 0, 0, 0);
CLASS(Orphan, "Orphan", 0, NOWHERE, &good, 0, 0, 0);
CLASS(Pious, "Pious", 0, &class_Good, &good, 0, NOWHERE, 0);
// A cycle: each is the other's superclass.
extern const struct Class class_Hen;
CLASS(Egg, "Egg", 0, &class_Hen, 0, 0, 0, 0);
CLASS(Hen, "Hen", 0, &class_Egg, 0, 0, 0, 0);
const struct Class bare = {.isa = &class_Good};
CLASS(Last, "Last", 0, &class_Good, &good, 0, 0, 0);

LISTED const void *classes[] = {&class_Nameless, &class_Good, &class_Partly, &class_Untyped, &class_Endless,
                                &class_Flat, &class_Cached, &class_Orphan, &class_Pious, &class_Egg, &class_Hen,
                                &bare, NOWHERE, 0, &class_Last};

// A Swift class that is made when the program runs has no record whose name could be read; what follows it looks like one.
static const struct { long mark; const void *make, *more[3]; } stub = {1, &good, {0, 0, &ro_Good}};
static const struct Category late = {.name = "Late", .cls = &stub, .methods = &good, .size = sizeof late};
IN_LIST("__objc_catlist2") const void *lateCategories[] = {&late};
