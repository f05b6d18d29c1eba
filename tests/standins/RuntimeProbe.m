// A class to try the bridge of the run time on.
#import <Foundation/Foundation.h>

static int live = 0;

@interface RuntimeProbe : NSObject
@end

@implementation RuntimeProbe
+ (int)live { return live; }
+ (id)probe {
  ++live;
  return [[[self alloc] init] autorelease];
}
- (void)dealloc {
  --live;
  [super dealloc];
}
- (double)half:(double)value { return value / 2; }
- (NSRange)rangeFrom:(NSUInteger)location length:(NSUInteger)length { return NSMakeRange(location, length); }
- (id)loneSurrogate {
  unichar unit = 0xD800;
  return [NSString stringWithCharacters:&unit length:1];
}
@end
