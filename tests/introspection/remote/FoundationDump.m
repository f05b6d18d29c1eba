// Prints the classes of GNUstep's Foundation as its own functions tell them, sorted by name, in the form of
// DynamicClassParserTests.cpp.
#import <Foundation/Foundation.h>
#import <GNUstepBase/GSObjCRuntime.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int byName(const void *a, const void *b) {
  return strcmp(GSNameFromClass(*(const Class *)a), GSNameFromClass(*(const Class *)b));
}

static void printMethods(FILE *out, Class cls, char sign) {
  unsigned count = 0;
  Method *methods = class_copyMethodList(cls, &count);
  for (unsigned i = 0; i < count; ++i) {
    SEL selector = method_getName(methods[i]);
    fprintf(out, "%c %s %s\n", sign, GSNameFromSelector(selector), method_getTypeEncoding(methods[i]));
  }
  free(methods);
}

static char *membersOf(Class cls) {
  char *text = NULL;
  size_t size = 0;
  FILE *out = open_memstream(&text, &size);
  unsigned count = 0;
  Protocol **protocols = class_copyProtocolList(cls, &count);
  for (unsigned i = 0; i < count; ++i) fprintf(out, "protocol %s\n", protocol_getName(protocols[i]));
  free(protocols);
  printMethods(out, cls, '-');
  printMethods(out, object_getClass(cls), '+');
  fclose(out);
  return text;
}

static const char *libraryOf(Class cls) { return [[[NSBundle bundleForClass:cls] executablePath] UTF8String]; }

int main(void) {
  unsigned count = GSClassList(NULL, 0, YES);
  Class *classes = calloc(count + 1, sizeof(Class));  // the list ends with a null
  count = GSClassList(classes, count, NO);
  qsort(classes, count, sizeof(Class), byName);
  // Before the first message: classes add methods to themselves when they are initialised.
  char **members = calloc(count, sizeof(char *));
  for (unsigned i = 0; i < count; ++i) members[i] = membersOf(classes[i]);

  NSAutoreleasePool *pool = [NSAutoreleasePool new];
  const char *foundation = libraryOf([NSObject class]);
  for (unsigned i = 0; i < count; ++i) {
    if (strcmp(libraryOf(classes[i]), foundation) == 0) {
      Class super = GSObjCSuper(classes[i]);
      printf("class %s\n", GSNameFromClass(classes[i]));
      if (super) printf("super %s %s\n", GSNameFromClass(super), libraryOf(super));
      printf("%s", members[i]);
    }
    free(members[i]);
  }
  free(members);
  free(classes);
  [pool drain];
  return fflush(stdout) == 0 ? 0 : 1;
}
