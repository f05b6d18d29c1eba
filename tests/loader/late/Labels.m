#import "Box.h"

@implementation Box (Labels)
- (NSString *)label { return @"label"; }
// In the place of the class's own.
- (NSString *)own { return @"own of the category"; }
@end
