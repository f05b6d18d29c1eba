// The same work as ClassDump with plain calls of the run time: copies the same texts and prints their numbers.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <link.h>
#include <objc/runtime.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

struct Record {
  char *name;
  char *superclass;
  char *superclassPath;
  char **protocols;
  struct {
    char *selector;
    char *encoding;
    char isClassMethod;
  } * methods;
};

static size_t methodCount, bytes;

static char *copied(const char *text) {
  size_t length = strlen(text);
  bytes += length;
  return memcpy(malloc(length + 1), text, length + 1);
}

static const struct link_map *imageOf(Class cls) {
  struct dl_find_object found;
  return _dl_find_object(cls, &found) == 0 ? found.dlfo_link_map : NULL;
}

static void copyProtocols(Class cls, struct Record *record) {
  unsigned count = 0;
  Protocol **protocols = class_copyProtocolList(cls, &count);
  record->protocols = calloc(count, sizeof(char *));
  for (unsigned i = 0; i < count; ++i) record->protocols[i] = copied(protocol_getName(protocols[i]));
  free(protocols);
}

static void copyMethods(Class cls, struct Record *record) {
  unsigned counts[2];
  Method *lists[] = {class_copyMethodList(cls, &counts[0]), class_copyMethodList(object_getClass((id)cls), &counts[1])};
  record->methods = calloc(counts[0] + counts[1], sizeof(*record->methods));
  size_t next = 0;
  for (int ofClass = 0; ofClass < 2; ++ofClass) {
    for (unsigned i = 0; i < counts[ofClass]; ++i, ++next) {
      record->methods[next].selector = copied(sel_getName(method_getName(lists[ofClass][i])));
      record->methods[next].encoding = copied(method_getTypeEncoding(lists[ofClass][i]));
      record->methods[next].isClassMethod = (char)ofClass;
    }
    free(lists[ofClass]);
  }
  methodCount += next;
}

static void copyClass(Class cls, struct Record *record) {
  record->name = copied(class_getName(cls));
  Class superclass = class_getSuperclass(cls);
  if (superclass) {
    record->superclass = copied(class_getName(superclass));
    record->superclassPath = copied(imageOf(superclass)->l_name);
  }
  copyProtocols(cls, record);
  copyMethods(cls, record);
}

static int byAddress(const void *a, const void *b) {
  const char *left = *(char *const *)a, *right = *(char *const *)b;
  return (left > right) - (left < right);
}

int main(int argc, char **argv) {
  void *handle = argc == 2 ? dlopen(argv[1], RTLD_LAZY) : NULL;
  struct link_map *image;
  if (!handle || dlinfo(handle, RTLD_DI_LINKMAP, &image) != 0) return 1;
  int all = objc_getClassList(NULL, 0), count = 0;
  Class *classes = calloc((size_t)all, sizeof(Class));
  objc_getClassList(classes, all);
  for (int i = 0; i < all; ++i) {
    if (imageOf(classes[i]) == image) classes[count++] = classes[i];
  }
  qsort(classes, (size_t)count, sizeof(Class), byAddress);
  struct Record *records = calloc((size_t)count, sizeof(struct Record));
  for (int i = 0; i < count; ++i) copyClass(classes[i], &records[i]);
  free(classes);
  printf("%d %zu %zu\n", count, methodCount, bytes);
  return 0;
}
