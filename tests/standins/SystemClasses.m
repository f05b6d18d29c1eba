// Stand-ins of the system's private classes, under their names, for tests of the library and, preloaded, of the command.
//
// What they answer stands in the property list that TAVLEN_STAND_INS names, read again at each question:
//   workspace, service   "none": there is no shared object; "raises": asking for it raises an exception
//   applications         an array: a dictionary in it becomes an LSApplicationProxy, anything else stays as it is;
//                        what is no array is answered as it is; absent: nil
//   pids                 a dictionary of numbers by bundle identifier; other apps do not run (-1)
//   launchErrors         a dictionary of texts by bundle identifier; launches of other apps succeed
//   launchAnswers        a dictionary of numbers by bundle identifier: how often a launch is answered; once for others
//   launchDelay          a real number: the seconds that pass before an answer; 0.02 without
//   launchOptions        a path: there the options of the last launch are written
//   programs             a dictionary of paths by bundle identifier: what a launch that succeeds starts, in this process's
//                        environment and the launch's; its pid is the app's for as long as it runs
//   programEnvironment   a dictionary of texts: further variables of such a program
// An application's dictionary holds, under the names of the proxy's methods, what they answer (bundleURL as a path, or
// as the text of a URL), Info.plist's values under "info", under "raises" the name of a method that raises an exception,
// and under "old" whether the proxy is one of a system that lacks the questions of LSCurrentApplicationProxy.
#import <Foundation/Foundation.h>

#include <Block.h>
#include <errno.h>
#include <pthread.h>
#include <spawn.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

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

extern char **environ;

// The block's layout, since GCC has no syntax for one.
typedef struct ResultBlock {
  void *isa;
  int flags;
  int reserved;
  void (*invoke)(struct ResultBlock *block, NSError *error);
} ResultBlock;

@interface FBSSystemService : NSObject
@end

// The programs that run, as numbers by bundle identifier.
static NSMutableDictionary *running(void) {
  static NSMutableDictionary *pids;
  @synchronized([NSMutableDictionary class]) {
    if (!pids) pids = [NSMutableDictionary new];
  }
  return pids;
}

static pid_t startProgram(NSString *app, NSDictionary *options) {
  NSString *program = [[script() objectForKey:@"programs"] objectForKey:app];
  if (!program) return -1;
  NSMutableDictionary *variables = [NSMutableDictionary dictionary];
  [variables addEntriesFromDictionary:[script() objectForKey:@"programEnvironment"]];
  [variables addEntriesFromDictionary:[[options objectForKey:@"__DebugOptions"] objectForKey:@"__Environment"]];
  size_t inherited = 0;
  while (environ[inherited]) ++inherited;
  // In front: the first of equal names counts.
  const char **environment = calloc([variables count] + inherited + 1, sizeof(*environment));
  size_t count = 0;
  NSEnumerator *each = [variables keyEnumerator];
  for (NSString *name = [each nextObject]; name; name = [each nextObject]) {
    environment[count++] = [[NSString stringWithFormat:@"%@=%@", name, [variables objectForKey:name]] UTF8String];
  }
  memcpy(environment + count, environ, inherited * sizeof(*environment));
  char *arguments[] = {(char *)[program fileSystemRepresentation], NULL};
  pid_t pid = -1;
  if (posix_spawn(&pid, arguments[0], NULL, NULL, arguments, (char **)environment) != 0) pid = -1;
  free(environment);
  return pid;
}

// One launch of an app. It keeps itself until it has been answered and its program has ended.
@interface Launch : NSObject {
@public
  NSString *app;
  // As it was at the launch: the test may be over when it is answered.
  NSDictionary *answers;
  ResultBlock *block;
  pid_t pid;
}
@end

@implementation Launch
- (void)dealloc {
  [app release];
  [answers release];
  [super dealloc];
}
- (void)answer {
  NSString *text = [[answers objectForKey:@"launchErrors"] objectForKey:app];
  NSNumber *times = [[answers objectForKey:@"launchAnswers"] objectForKey:app];
  NSNumber *delay = [answers objectForKey:@"launchDelay"];
  [NSThread sleepForTimeInterval:delay ? [delay doubleValue] : 0.02];
  for (int left = times ? [times intValue] : 1; left > 0; --left) {
    block->invoke(block, text ? [NSError errorWithDomain:text code:1 userInfo:nil] : nil);
  }
  _Block_release(block);
}
- (void)wait {
  if (pid < 0) return;
  while (waitpid(pid, NULL, 0) < 0 && errno == EINTR) {
  }
  @synchronized(running()) {
    if ([[running() objectForKey:app] intValue] == pid) [running() removeObjectForKey:app];
  }
}
@end

static void *follow(void *launch) {
  NSAutoreleasePool *pool = [NSAutoreleasePool new];
  [(Launch *)launch answer];
  [(Launch *)launch wait];
  [(Launch *)launch release];
  [pool drain];
  return NULL;
}

@implementation FBSSystemService
+ (id)sharedService { return singleton(@"service", self); }
- (int)pidForApplication:(NSString *)bundleID {
  NSNumber *pid = [[script() objectForKey:@"pids"] objectForKey:bundleID];
  @synchronized(running()) {
    if (!pid) pid = [[[running() objectForKey:bundleID] retain] autorelease];
  }
  return pid ? [pid intValue] : -1;
}
- (void)openApplication:(NSString *)bundleID options:(NSDictionary *)options withResult:(void *)result {
  NSDictionary *answers = script();
  NSString *notes = [answers objectForKey:@"launchOptions"];
  if (notes) [options writeToFile:notes atomically:YES];
  Launch *launch = [Launch new];
  launch->app = [bundleID copy];
  launch->answers = [answers retain];
  launch->block = _Block_copy(result);
  launch->pid = [[answers objectForKey:@"launchErrors"] objectForKey:bundleID] ? -1 : startProgram(bundleID, options);
  if (launch->pid > 0) {
    @synchronized(running()) {
      [running() setObject:[NSNumber numberWithInt:launch->pid] forKey:bundleID];
    }
  }
  // Not one of NSThread's: where the first thread that GNUstep met is not the program's, they end the process.
  pthread_t thread;
  if (pthread_create(&thread, NULL, follow, launch) == 0) pthread_detach(thread);
}
@end
