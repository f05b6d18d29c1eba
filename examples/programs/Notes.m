// A program of this machine with the classes of the app com.example.notes, to try tweaks for the app in.
#import <Foundation/Foundation.h>

@interface NoteList : NSObject
@end

@implementation NoteList
- (id)title { return @"Notes"; }
- (id)titleAtIndex:(NSUInteger)index { return [NSString stringWithFormat:@"Note %lu", (unsigned long)index]; }
@end

@interface NoteStore : NSObject
@end

@implementation NoteStore
- (BOOL)saveNote:(id)note error:(NSError **)error { return NO; }
@end

int main(void) {
  NSAutoreleasePool *pool = [NSAutoreleasePool new];
  NoteList *list = [[NoteList new] autorelease];
  NoteStore *store = [[NoteStore new] autorelease];
  printf("title: %s\n", [[list title] UTF8String]);
  printf("first note: %s\n", [[list titleAtIndex:0] UTF8String]);
  printf("saved: %s\n", [store saveNote:@"note" error:NULL] ? "yes" : "no");
  [pool drain];
  return 0;
}
