// An image that calls the program back while it is being loaded, and leaves the text of a failed look-up to the loader.
#define _GNU_SOURCE
#include <dlfcn.h>

#import <objc/Object.h>

static void callBack(const char *initialiser) {
  void (*callback)(const char *) = (void (*)(const char *))dlsym(RTLD_DEFAULT, "tavlenSampleCallback");
  if (callback) callback(initialiser);
}

@interface SampleLoaded : Object
@end
@implementation SampleLoaded
+ (void)load { callBack("load"); }
@end

__attribute__((constructor)) static void construct(void) {
  callBack("constructor");
  dlsym(RTLD_DEFAULT, "tavlenNoSuchName");
}
