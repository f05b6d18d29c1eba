// A program of the tests of `try`: it prints what methods with each kind of type answer. It knows nothing of the loader.
#import <Foundation/Foundation.h>

#include <dlfcn.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

typedef struct CGPoint {
  double x, y;
} CGPoint;
typedef struct CGSize {
  double width, height;
} CGSize;
typedef struct CGRect {
  CGPoint origin;
  CGSize size;
} CGRect;
typedef struct {
  char letter;
  float real;
  short list[3];
} Mixed;

@interface Shelf : NSObject
@end

@implementation Shelf
+ (id)shelf { return [[[self alloc] init] autorelease]; }
- (id)title { return @"original"; }
- (BOOL)isOpen { return NO; }
- (char)letter { return 'a'; }
- (short)small { return -2; }
- (unsigned short)smallCount { return 2; }
- (int)number { return -4; }
- (unsigned int)count { return 4; }
- (long long)large { return -8; }
- (unsigned long long)largeCount { return 8; }
- (float)ratio { return 0.25f; }
- (double)width { return 0.5; }
- (long double)exact { return 0.125L; }
- (const char *)name { return "original"; }
- (Class)itemClass { return [NSObject class]; }
- (SEL)action { return @selector(title); }
- (CGRect)frame { return (CGRect){{1, 2}, {3, 4}}; }
- (NSRange)range { return NSMakeRange(1, 2); }
- (Mixed)mixed { return (Mixed){'m', 0.5f, {1, 2, 3}}; }
- (void)add:(NSMutableArray *)list { [list addObject:@"original"]; }
- (id)join:(id)object number:(int)number real:(double)real frame:(CGRect)frame name:(const char *)name range:(NSRange)range {
  return [NSString stringWithFormat:@"%@ %d %g %g %s %lu", object, number, real, frame.size.height, name,
                                    (unsigned long)range.length];
}
- (id)fail:(id)reason {
  [NSException raise:NSRangeException format:@"%@", reason];
  return nil;
}
- (int)countdown:(int)from { return from == 0 ? 0 : 1 + [self countdown:from - 1]; }
- (id)block { return nil; }
@end

@interface BigShelf : Shelf
@end
@implementation BigShelf
@end

static void leave(int signal) { _exit(40 + (signal == SIGUSR1)); }

/// What a program does before its main function.
__attribute__((constructor)) static void handleEarly(void) {
  if (getenv("HANDLE_EARLY")) signal(atoi(getenv("HANDLE_EARLY")), leave);
}

/// Gets the signal from itself, or from a null pointer.
static void die(const char *number) {
  if (strcmp(number, "null") == 0) *(volatile int *)NULL = 1;
  kill(getpid(), atoi(number));
  for (int i = 0; i < 1000; ++i) [[Shelf shelf] title];
}

static void print(const char *name, NSString *value) { printf("%s: %s\n", name, [value UTF8String]); }

int main(int argc, char **argv) {
  NSAutoreleasePool *pool = [NSAutoreleasePool new];
  if (argc > 1 && strcmp(argv[1], "signal") == 0) {
    [[Shelf shelf] title];
    if (argc > 3) signal(atoi(argv[2]), leave);
    die(argv[2]);
    return 0;
  }
  if (argc > 1 && strcmp(argv[1], "status") == 0) return atoi(argv[2]);
  if (argc > 1 && strcmp(argv[1], "child") == 0) {
    if (fork() != 0) return wait(NULL) < 0;
    print("title", [[Shelf shelf] title]);
    // Foundation's own copy of the environment, which its tasks get.
    print("variables", [[[NSProcessInfo processInfo] environment] description]);
    fflush(stdout);
    execl("/usr/bin/env", "env", (char *)NULL);
    return 1;
  }
  if (argc > 1 && strcmp(argv[1], "late") == 0) {
    if (dlopen(argv[2], RTLD_NOW) == NULL) return 1;
    id box = [[NSClassFromString(@"Box") new] autorelease];
    for (NSString *name in [NSArray arrayWithObjects:@"own", @"inherited", @"label", nil])
      print([name UTF8String], [box performSelector:NSSelectorFromString(name)]);
    return fflush(stdout);
  }
  Shelf *shelf = [Shelf shelf];
#define SHOW(format, method) print(#method, [NSString stringWithFormat:format, [shelf method]])
  SHOW(@"%@", title);
  SHOW(@"%d", isOpen);
  SHOW(@"%d", letter);
  SHOW(@"%d", small);
  SHOW(@"%d", smallCount);
  SHOW(@"%d", number);
  SHOW(@"%u", count);
  SHOW(@"%lld", large);
  SHOW(@"%llu", largeCount);
  SHOW(@"%g", ratio);
  SHOW(@"%g", width);
  print("exact", [NSString stringWithFormat:@"%g", (double)[shelf exact]]);
  SHOW(@"%s", name);
  print("itemClass", NSStringFromClass([shelf itemClass]));
  print("action", NSStringFromSelector([shelf action]));
  CGRect frame = [shelf frame];
  print("frame", [NSString stringWithFormat:@"%g %g %g %g", frame.origin.x, frame.origin.y, frame.size.width,
                                            frame.size.height]);
  print("range", NSStringFromRange([shelf range]));
  Mixed mixed = [shelf mixed];
  print("mixed", [NSString stringWithFormat:@"%d %g %d %d %d", mixed.letter, mixed.real, mixed.list[0], mixed.list[1],
                                            mixed.list[2]]);
  NSMutableArray *list = [NSMutableArray array];
  [shelf add:list];
  print("add", [list componentsJoinedByString:@" "]);
  print("join", [shelf join:@"a" number:1 real:0.5 frame:frame name:"n" range:NSMakeRange(3, 4)]);
  @try {
    print("fail", [shelf fail:@"reason"]);
  } @catch (NSException *exception) {
    print("fail", [NSString stringWithFormat:@"%@ %@", [exception name], [exception reason]]);
  }
  SHOW(@"%@", block);
  print("countdown", [NSString stringWithFormat:@"%d", [shelf countdown:3]]);
  print("inherited", [[BigShelf shelf] title]);
  NSBundle *bundle = [NSBundle mainBundle];
  NSDictionary *info = [bundle infoDictionary];
  print("info", [NSString stringWithFormat:@"%@ %@ %@ %lu", [bundle objectForInfoDictionaryKey:@"CFBundleName"],
                                           [info objectForKey:@"MinimumOSVersion"], [info objectForKey:@"Own"],
                                           (unsigned long)[info count]]);
  fflush(stdout);
  [pool drain];
  return 0;
}
