#define _GNU_SOURCE
#import <Foundation/Foundation.h>
#import <objc/runtime.h>

#include <dlfcn.h>
#include <stdlib.h>

#include "SignaturePeer.h"

static const char **encodings = NULL;
static size_t count = 0;

static void addMethods(Class cls) {
  unsigned methodCount = 0;
  unsigned i = 0;
  Method *methods = class_copyMethodList(cls, &methodCount);
  encodings = realloc(encodings, (count + methodCount) * sizeof *encodings);
  for (; i < methodCount; ++i) encodings[count++] = method_getTypeEncoding(methods[i]);
  free(methods);
}

const char *const *copyMethodEncodings(size_t *total) {
  Dl_info foundation;
  Dl_info image;
  int classCount = objc_getClassList(NULL, 0);
  Class *classes = malloc((size_t)classCount * sizeof *classes);
  int i = 0;
  dladdr([NSObject class], &foundation);
  classCount = objc_getClassList(classes, classCount);
  for (; i < classCount; ++i) {
    if (dladdr(classes[i], &image) == 0 || image.dli_fbase != foundation.dli_fbase) continue;
    addMethods(classes[i]);
    addMethods(object_getClass(classes[i]));
  }
  free(classes);
  *total = count;
  return encodings;
}

static size_t readSignature(const char *encoding) {
  NSMethodSignature *signature = [NSMethodSignature signatureWithObjCTypes:encoding];
  const NSUInteger arguments = [signature numberOfArguments];
  size_t types = [signature methodReturnType] != NULL;
  NSUInteger i = 0;
  for (; i < arguments; ++i) types += [signature getArgumentTypeAtIndex:i] != NULL;
  return types;
}

size_t readSignatures(const char *const *texts, size_t total) {
  size_t types = 0;
  size_t i = 0;
  while (i < total) {
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    const size_t end = i + 1000 < total ? i + 1000 : total;
    for (; i < end; ++i) types += readSignature(texts[i]);
    [pool drain];
  }
  return types;
}
