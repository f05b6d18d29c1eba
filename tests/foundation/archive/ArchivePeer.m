// The other side of keyed archives: GNUstep's Foundation, with classes as an app would write them.
//   ArchivePeer reread IN OUT     reads an archive and archives what it has read
//   ArchivePeer mutable IN OUT    likewise, with mutable texts and lists
//   ArchivePeer time FILE RUNS    prints the median of the processor's milliseconds for a reading
#import <Foundation/Foundation.h>

#include <stdlib.h>
#include <time.h>

static BOOL makesMutable = NO;

static id mutableIfAsked(id value) {
  return makesMutable && value != nil ? AUTORELEASE([value mutableCopy]) : value;
}

// A class that keeps what it reads under its keys, and writes it again.
@interface Record : NSObject <NSCoding> {
  id values[6];
}
- (NSString *const *)keys;  // with nil at its end
@end

@implementation Record
- (NSString *const *)keys { return NULL; }
- (id)initWithCoder:(NSCoder *)coder {
  NSString *const *keys = [self keys];
  for (int i = 0; keys[i]; ++i) values[i] = RETAIN([coder decodeObjectForKey:keys[i]]);
  return self;
}
- (void)encodeWithCoder:(NSCoder *)coder {
  NSString *const *keys = [self keys];
  for (int i = 0; keys[i]; ++i) [coder encodeObject:mutableIfAsked(values[i]) forKey:keys[i]];
}
- (void)dealloc {
  for (int i = 0; i < 6; ++i) RELEASE(values[i]);
  [super dealloc];
}
@end

@interface ObjCMethod : Record {
  BOOL isClassMethod;
}
@end

@implementation ObjCMethod
- (NSString *const *)keys {
  static NSString *const keys[] = {@"selector", @"encoding", nil};
  return keys;
}
- (id)initWithCoder:(NSCoder *)coder {
  isClassMethod = [coder decodeBoolForKey:@"isClassMethod"];
  return [super initWithCoder:coder];
}
- (void)encodeWithCoder:(NSCoder *)coder {
  [super encodeWithCoder:coder];
  [coder encodeBool:isClassMethod forKey:@"isClassMethod"];
}
@end

@interface ObjCClass : Record
@end

@implementation ObjCClass
- (NSString *const *)keys {
  static NSString *const keys[] = {@"name", @"methods", @"mangledSuperclass", @"supercls", @"superclassPath", @"protocols", nil};
  return keys;
}
@end

@interface TweakInfo : Record
@end

@implementation TweakInfo
- (NSString *const *)keys {
  static NSString *const keys[] = {@"bundleID", @"tweakID", @"customIconURL", nil};
  return keys;
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
  const int status = [task isEqual:@"time"] ? printTime(file, [last intValue]) : reread(file, last);
  [pool drain];
  return status;
}
