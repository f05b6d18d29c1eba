#import "Box.h"

@implementation Box
- (NSString *)own { return @"own"; }
@end
