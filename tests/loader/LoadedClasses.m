// Classes whose methods the tests of the loader hook.
#import <Foundation/Foundation.h>

static int live = 0;

/// Counts its instances.
@interface Counted : NSObject <NSCopying>
@end

@implementation Counted
+ (int)live { return live; }
+ (id)counted { return [[[self alloc] init] autorelease]; }
+ (id)allocWithZone:(NSZone *)zone {
  __atomic_add_fetch(&live, 1, __ATOMIC_SEQ_CST);
  return [super allocWithZone:zone];
}
- (id)copyWithZone:(NSZone *)zone { return [[[self class] allocWithZone:zone] init]; }
- (void)dealloc {
  __atomic_sub_fetch(&live, 1, __ATOMIC_SEQ_CST);
  [super dealloc];
}
- (id)itself { return self; }
- (int)tag { return 7; }
@end

@interface CountedChild : Counted
@end

@implementation CountedChild
- (void)dealloc { [super dealloc]; }
@end

/// Cannot be retained.
@interface Unheld : NSObject
@end

@implementation Unheld
- (id)retain {
  [NSException raise:NSRangeException format:@"not held"];
  return nil;
}
@end

@interface Answers : NSObject
@end

@implementation Answers
// Each hook of the tests replaces this one.
- (id)answer:(id)argument { return argument ? @"original" : nil; }
+ (id)shared { return @"original"; }
- (int)depth:(int)depth { return depth == 0 ? 0 : 1 + [self depth:depth - 1]; }
- (unsigned long long)notFound { return 0x7fffffffffffffffULL; }
- (unsigned long long)same:(unsigned long long)value { return value; }
- (id)raise {
  [NSException raise:NSRangeException format:@"beyond"];
  return nil;
}
- (long long)sum:(int)count, ... {
  va_list arguments;
  va_start(arguments, count);
  long long sum = 0;
  for (int i = 0; i < count; ++i) sum += va_arg(arguments, long long);
  va_end(arguments);
  return sum;
}
- (NSString *)join:(NSString *)first, ... {
  va_list arguments;
  va_start(arguments, first);
  NSMutableString *text = [NSMutableString string];
  for (NSString *next = first; next; next = va_arg(arguments, NSString *)) [text appendString:next];
  va_end(arguments);
  return text;
}
- (id)forward:(id)value { return value; }
@end

// Used by one test alone: it hooks classes that have not been initialised.
@interface Unused : NSObject
@end
@implementation Unused
+ (id)name { return @"unused"; }
@end
@interface UnusedChild : Unused
@end
@implementation UnusedChild
@end
@interface UnusedOther : NSObject
@end
@implementation UnusedOther
+ (id)name { return @"other"; }
@end

@interface Lengths : NSObject
@end

@implementation Lengths
- (int)forward:(NSString *)value { return (int)[value length]; }
@end

/// Passes what it does not know on to an object of a class.
@interface Forwarding : NSObject {
  id target;
}
@end

@implementation Forwarding
- (id)initWithClass:(Class)cls {
  target = [cls new];
  return self;
}
- (NSMethodSignature *)methodSignatureForSelector:(SEL)selector {
  return [target methodSignatureForSelector:selector] ?: [super methodSignatureForSelector:selector];
}
- (void)forwardInvocation:(NSInvocation *)invocation { [invocation invokeWithTarget:target]; }
@end
