// The only code that can catch an Objective-C exception together with its object, and raise one as such.
#include <objc/message.h>
#include <objc/objc.h>
#include <objc/runtime.h>

id tavlen_loader_run_guarded(void (*body)(void *context), void *context);
void tavlen_loader_raise(id object) __attribute__((noreturn));

static id retained(id object) {
  SEL retain = sel_registerName("retain");
  // An object of any class can be raised, also one whose references are not counted.
  if (!class_respondsToSelector(object_getClass(object), retain)) return object;
#ifdef __APPLE__
  return ((id(*)(id, SEL))objc_msgSend)(object, retain);
#else
  return ((id(*)(id, SEL))objc_msg_lookup(object, retain))(object, retain);
#endif
}

id tavlen_loader_run_guarded(void (*body)(void *context), void *context) {
  @try {
    body(context);
  } @catch (id raised) {
    return retained(raised);
  }
  return nil;
}

void tavlen_loader_raise(id object) {
  (void)object;  // GCC does not count this as its use
  @throw object;
}
