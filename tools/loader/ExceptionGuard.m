// The only code that can catch an Objective-C exception together with its object, and raise one as such.
#include <objc/message.h>
#include <objc/objc-exception.h>
#include <objc/objc.h>
#include <objc/runtime.h>

id tavlen_loader_run_guarded(void (*body)(void *context), void *context);
void tavlen_loader_raise(id object) __attribute__((noreturn));

id tavlen_loader_run_guarded(void (*body)(void *context), void *context) {
  @try {
    body(context);
  } @catch (id raised) {
    SEL retain = sel_registerName("retain");
    // An object of any class can be raised, even one that nobody can retain.
    if (class_respondsToSelector(object_getClass(raised), retain)) {
      raised = ((id(*)(id, SEL))objc_msg_lookup(raised, retain))(raised, retain);
    }
    return raised;
  }
  return nil;
}

void tavlen_loader_raise(id object) {
  objc_exception_throw(object);
  __builtin_unreachable();
}
