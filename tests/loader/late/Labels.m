#import "Box.h"

@implementation Box (Labels)
- (NSString *)label { return @"label"; }
@end
