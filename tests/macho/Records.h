// The run time's records in C, for sources that lay them out by hand.
#pragma once

enum Flags { META = 1, ROOT = 2 };
enum DataBits { EARLY_SWIFT = 1, SWIFT = 2 };

struct Method {
  const char *name, *types;
  const void* implementation;
};
#define METHODS(n)               \
  struct {                       \
    unsigned elementSize, count; \
    struct Method methods[n];    \
  }

struct ReadOnlyData {
  unsigned flags, instanceStart, instanceSize, reserved;
  const void* ivarLayout;
  const char* name;
  const void *methods, *protocols, *ivars, *weakIvarLayout, *properties;
};
struct Class {
  const void *isa, *superclass, *cache, *table, *data;
};
struct Category {
  const char* name;
  const void *cls, *methods, *classMethods, *protocols, *properties, *classProperties;
  unsigned size, reserved;
};
struct Protocol {
  const void* isa;
  const char* name;
  const void *inherited, *methods, *classMethods, *optionalMethods, *optionalClassMethods,
      *properties;
  unsigned size, flags;
};

extern const struct Class rootOfSystem __asm("_OBJC_CLASS_$_NSObject");

// A class and its metaclass: flags, superclass, lists or null, and the bits of its data word.
#define CLASS(id, className, roFlags, super, methodList, classMethodList, protocolList, bits) \
  static const struct ReadOnlyData ro_##id = {                                                \
      .flags = roFlags, .name = className, .methods = methodList, .protocols = protocolList}; \
  static const struct ReadOnlyData metaRo_##id = {                                            \
      .flags = roFlags | META, .name = className, .methods = classMethodList};                \
  static const struct Class meta_##id = {.data = &metaRo_##id};                               \
  const struct Class class_##id = {                                                           \
      .isa = &meta_##id, .superclass = super, .data = (const char*)&ro_##id + bits}

#define IN_LIST(section_name) \
  __attribute__((used, section("__DATA," section_name ",regular,no_dead_strip"))) static
#define LISTED IN_LIST("__objc_classlist")
