// Records that no compiler at hand makes, laid out by hand: Swift's flags, sorted lists and lists with larger elements, null
// pointers where they are allowed.
#include "Records.h"

// A list whose elements have a fourth word.
static const struct {
  unsigned elementSize, count;
  struct { struct Method method; const void *more; } methods[3];
} wide = {32, 3, {{{"first", "v16@0:8", 0}, 0}, {{"untyped", 0, 0}, 0}, {{"empty", "", 0}, 0}}};
// A preoptimiser leaves its mark in the low bits.
static const METHODS(2) sorted = {24 | 3, 2, {{"a", "i16@0:8", 0}, {"b:", "v20@0:8i16", 0}}};
static const METHODS(1) made = {24, 1, {{"made", "@16@0:8", 0}}};

static const struct Protocol closing = {.name = "Closing", .size = sizeof closing};
static const struct Protocol opening = {.name = "_TtP5Notes7Opening_", .size = sizeof opening};
static const struct { long count; const struct Protocol *protocols[3]; } adopted = {3, {&closing, 0, &opening}};

CLASS(Base, "Base", ROOT, 0, &wide, 0, 0, 0);
CLASS(Sorted, "Sorted", 0, &class_Base, &sorted, &made, &adopted, 0);
// Its superclass is filled in by the run time.
CLASS(Unknown, "_TtC5Notes7Unknown", 0, 0, 0, 0, 0, SWIFT);
CLASS(List, "_TtC5Notes4List", 0, &class_Unknown, &sorted, 0, 0, SWIFT);
CLASS(Early, "_TtC5Notes5Early", 0, &class_List, 0, 0, 0, EARLY_SWIFT);
CLASS(Standard, "_TtCs6Object", 0, &rootOfSystem, 0, 0, 0, SWIFT);

LISTED const void *classes[] = {&class_Base, &class_Sorted, &class_Unknown, &class_List,
                                &class_Early, &class_Standard, &class_Sorted};
