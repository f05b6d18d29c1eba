// Stand-ins of the system's private classes, under their names, for tests of the library and, preloaded, of the command.
//
// What they answer stands in the property list that TAVLEN_STAND_INS names, read again at each question:
//   workspace, service   "none": there is no shared object; "raises": asking for it raises an exception
//   applications         an array: a dictionary in it becomes an LSApplicationProxy, anything else stays as it is;
//                        what is no array is answered as it is; absent: nil
//   pids                 a dictionary of numbers by bundle identifier; other apps do not run (-1)
//   launchErrors         a dictionary of texts by bundle identifier; launches of other apps succeed
// An application's dictionary holds, under the names of the proxy's methods, what they answer (bundleURL as a path, or
// as the text of a URL), Info.plist's values under "info", under "raises" the name of a method that raises an exception,
// and under "old" whether the proxy is one of a system that lacks the questions of LSCurrentApplicationProxy.
#import <Foundation/Foundation.h>

#include <Block.h>
#include <stdlib.h>

static NSDictionary *script(void) {
  const char *path = getenv("TAVLEN_STAND_INS");
  return path ? [NSDictionary dictionaryWithContentsOfFile:[NSString stringWithUTF8String:path]] : nil;
}

static id singleton(NSString *key, Class cls) {
  id state = [script() objectForKey:key];
  if ([state isEqual:@"raises"]) [NSException raise:NSInternalInconsistencyException format:@"%@", key];
  return [state isEqual:@"none"] ? nil : [[[cls alloc] init] autorelease];
}

@interface LSApplicationProxy : NSObject {
  NSDictionary *record;
}
- (id)initWithRecord:(NSDictionary *)aRecord;
- (id)answerTo:(NSString *)question;
@end

@implementation LSApplicationProxy
- (id)initWithRecord:(NSDictionary *)aRecord {
  if ((self = [super init])) record = [aRecord retain];
  return self;
}
- (void)dealloc {
  [record release];
  [super dealloc];
}
- (id)answerTo:(NSString *)question {
  if ([[record objectForKey:@"raises"] isEqual:question]) {
    [NSException raise:NSInternalInconsistencyException format:@"%@", question];
  }
  return [record objectForKey:question];
}
- (id)bundleIdentifier { return [self answerTo:@"bundleIdentifier"]; }
- (id)bundleURL {
  id url = [self answerTo:@"bundleURL"];
  if (![url isKindOfClass:[NSString class]]) return url;
  return [url hasPrefix:@"/"] ? [NSURL fileURLWithPath:url] : [NSURL URLWithString:url];
}
- (id)objectForInfoDictionaryKey:(NSString *)key ofClass:(Class)cls {
  id value = [[self answerTo:@"info"] objectForKey:key];
  return [value isKindOfClass:cls] ? value : nil;
}
@end

@interface LSCurrentApplicationProxy : LSApplicationProxy
@end

@implementation LSCurrentApplicationProxy
- (BOOL)isLaunchProhibited { return [[self answerTo:@"isLaunchProhibited"] boolValue]; }
- (BOOL)isPlaceholder { return [[self answerTo:@"isPlaceholder"] boolValue]; }
- (BOOL)isRemovedSystemApp { return [[self answerTo:@"isRemovedSystemApp"] boolValue]; }
- (id)appTags { return [self answerTo:@"appTags"]; }
@end

@interface LSApplicationWorkspace : NSObject
@end

@implementation LSApplicationWorkspace
+ (id)defaultWorkspace { return singleton(@"workspace", self); }
- (id)allApplications {
  id records = [script() objectForKey:@"applications"];
  if (![records isKindOfClass:[NSArray class]]) return records;
  NSMutableArray *proxies = [NSMutableArray array];
  NSEnumerator *each = [records objectEnumerator];
  for (id proxy = [each nextObject]; proxy; proxy = [each nextObject]) {
    if ([proxy isKindOfClass:[NSDictionary class]]) {
      BOOL old = [[proxy objectForKey:@"old"] boolValue];
      Class cls = old ? [LSApplicationProxy class] : [LSCurrentApplicationProxy class];
      proxy = [[[cls alloc] initWithRecord:proxy] autorelease];
    }
    [proxies addObject:proxy];
  }
  return proxies;
}
@end

// The block's layout, since GCC has no syntax for one.
typedef struct ResultBlock {
  void *isa;
  int flags;
  int reserved;
  void (*invoke)(struct ResultBlock *block, NSError *error);
} ResultBlock;

@interface FBSSystemService : NSObject
@end

@implementation FBSSystemService
+ (id)sharedService { return singleton(@"service", self); }
- (int)pidForApplication:(NSString *)bundleID {
  NSNumber *pid = [[script() objectForKey:@"pids"] objectForKey:bundleID];
  return pid ? [pid intValue] : -1;
}
- (void)answer:(NSArray *)launch {
  NSAutoreleasePool *pool = [NSAutoreleasePool new];
  ResultBlock *block = [[launch objectAtIndex:0] pointerValue];
  NSString *text = [[script() objectForKey:@"launchErrors"] objectForKey:[launch objectAtIndex:1]];
  [NSThread sleepForTimeInterval:0.02];
  block->invoke(block, text ? [NSError errorWithDomain:text code:1 userInfo:nil] : nil);
  _Block_release(block);
  [pool drain];
}
- (void)openApplication:(NSString *)bundleID options:(NSDictionary *)options withResult:(void *)result {
  (void)options;
  NSValue *block = [NSValue valueWithPointer:_Block_copy(result)];
  [NSThread detachNewThreadSelector:@selector(answer:)
                           toTarget:self
                         withObject:[NSArray arrayWithObjects:block, bundleID, nil]];
}
@end
