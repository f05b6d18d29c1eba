// An image for the dump agent. Where TAVLEN_STALL is set, loading it takes longer than any test.
#include <objc/objc.h>
#include <stdlib.h>
#include <unistd.h>

__attribute__((objc_root_class)) @interface DumpedProbe {
  Class isa;
}
- (int)add:(int)first to:(int)second;
+ (double)half:(double)value;
@end

@implementation DumpedProbe
- (int)add:(int)first to:(int)second { return first + second; }
+ (double)half:(double)value { return value / 2; }
@end

__attribute__((constructor)) static void stall(void) {
  if (getenv("TAVLEN_STALL")) sleep(120);
}
