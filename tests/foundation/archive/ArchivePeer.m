// The other side of keyed archives: GNUstep's Foundation, with classes as an app would write them.
//   ArchivePeer reread IN OUT     reads an archive and archives what it has read
//   ArchivePeer mutable IN OUT    likewise, with mutable texts and lists
//   ArchivePeer rebase IN OUT     likewise, with a URL that has a base
//   ArchivePeer time FILE RUNS    prints the median of the processor's milliseconds for a reading
#import <Foundation/Foundation.h>

#include <stdlib.h>
#include <time.h>

static BOOL makesMutable = NO;
static BOOL rebasesURLs = NO;

static id mutableIfAsked(id value) {
  return makesMutable && value != nil ? AUTORELEASE([value mutableCopy]) : value;
}

@interface ObjCMethod : NSObject <NSCoding> {
  NSString *selector;
  NSString *encoding;
  BOOL isClassMethod;
}
@end

@implementation ObjCMethod
- (id)initWithCoder:(NSCoder *)coder {
  ASSIGN(selector, [coder decodeObjectForKey:@"selector"]);
  ASSIGN(encoding, [coder decodeObjectForKey:@"encoding"]);
  isClassMethod = [coder decodeBoolForKey:@"isClassMethod"];
  return self;
}
- (void)encodeWithCoder:(NSCoder *)coder {
  [coder encodeObject:mutableIfAsked(selector) forKey:@"selector"];
  [coder encodeObject:encoding forKey:@"encoding"];
  [coder encodeBool:isClassMethod forKey:@"isClassMethod"];
}
- (void)dealloc {
  RELEASE(selector);
  RELEASE(encoding);
  [super dealloc];
}
@end

@interface ObjCClass : NSObject <NSCoding> {
  NSString *name;
  NSArray *methods;
  NSString *mangledSuperclass;
  NSString *supercls;
  NSString *superclassPath;
  NSArray *protocols;
}
@end

@implementation ObjCClass
- (id)initWithCoder:(NSCoder *)coder {
  ASSIGN(name, [coder decodeObjectForKey:@"name"]);
  ASSIGN(methods, [coder decodeObjectForKey:@"methods"]);
  ASSIGN(mangledSuperclass, [coder decodeObjectForKey:@"mangledSuperclass"]);
  ASSIGN(supercls, [coder decodeObjectForKey:@"supercls"]);
  ASSIGN(superclassPath, [coder decodeObjectForKey:@"superclassPath"]);
  ASSIGN(protocols, [coder decodeObjectForKey:@"protocols"]);
  return self;
}
- (void)encodeWithCoder:(NSCoder *)coder {
  [coder encodeObject:mutableIfAsked(name) forKey:@"name"];
  [coder encodeObject:mutableIfAsked(methods) forKey:@"methods"];
  [coder encodeObject:mangledSuperclass forKey:@"mangledSuperclass"];
  [coder encodeObject:supercls forKey:@"supercls"];
  [coder encodeObject:superclassPath forKey:@"superclassPath"];
  [coder encodeObject:mutableIfAsked(protocols) forKey:@"protocols"];
}
- (void)dealloc {
  RELEASE(name);
  RELEASE(methods);
  RELEASE(mangledSuperclass);
  RELEASE(supercls);
  RELEASE(superclassPath);
  RELEASE(protocols);
  [super dealloc];
}
@end

@interface TweakInfo : NSObject <NSCoding> {
  NSString *bundleID;
  NSString *tweakID;
  NSURL *customIconURL;
}
@end

@implementation TweakInfo
- (id)initWithCoder:(NSCoder *)coder {
  ASSIGN(bundleID, [coder decodeObjectForKey:@"bundleID"]);
  ASSIGN(tweakID, [coder decodeObjectForKey:@"tweakID"]);
  ASSIGN(customIconURL, [coder decodeObjectForKey:@"customIconURL"]);
  return self;
}
- (NSURL *)archivedURL {
  if (!rebasesURLs || customIconURL == nil) return customIconURL;
  NSString *path = [customIconURL path];
  NSURL *base = [NSURL fileURLWithPath:[path stringByDeletingLastPathComponent] isDirectory:YES];
  return [NSURL URLWithString:[path lastPathComponent] relativeToURL:base];
}
- (void)encodeWithCoder:(NSCoder *)coder {
  [coder encodeObject:mutableIfAsked(bundleID) forKey:@"bundleID"];
  [coder encodeObject:tweakID forKey:@"tweakID"];
  [coder encodeObject:[self archivedURL] forKey:@"customIconURL"];
}
- (void)dealloc {
  RELEASE(bundleID);
  RELEASE(tweakID);
  RELEASE(customIconURL);
  [super dealloc];
}
@end

static int reread(NSString *input, NSString *output) {
  id root = [NSKeyedUnarchiver unarchiveObjectWithFile:input];
  return [NSKeyedArchiver archiveRootObject:mutableIfAsked(root) toFile:output] ? 0 : 1;
}

static int compareTimes(const void *a, const void *b) {
  const double first = *(const double *)a;
  const double second = *(const double *)b;
  return first < second ? -1 : first > second;
}

static int printTime(NSString *file, int runs) {
  NSData *data = [NSData dataWithContentsOfFile:file];
  double times[101];
  int i = 0;
  if (data == nil || runs < 1 || runs > 101) return 1;
  for (; i < runs; ++i) {
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    const clock_t begin = clock();
    id root = RETAIN([NSKeyedUnarchiver unarchiveObjectWithData:data]);
    times[i] = (double)(clock() - begin) * 1000 / CLOCKS_PER_SEC;
    if ([root count] == 0) return 1;
    RELEASE(root);
    [pool drain];
  }
  qsort(times, (size_t)runs, sizeof times[0], compareTimes);
  printf("%f\n", times[runs / 2]);
  return 0;
}

int main(int count, char **arguments) {
  if (count != 4) return 2;
  NSAutoreleasePool *pool = [NSAutoreleasePool new];
  NSString *task = [NSString stringWithUTF8String:arguments[1]];
  NSString *file = [NSString stringWithUTF8String:arguments[2]];
  NSString *last = [NSString stringWithUTF8String:arguments[3]];
  makesMutable = [task isEqual:@"mutable"];
  rebasesURLs = [task isEqual:@"rebase"];
  const int status = [task isEqual:@"time"] ? printTime(file, [last intValue]) : reread(file, last);
  [pool drain];
  return status;
}
