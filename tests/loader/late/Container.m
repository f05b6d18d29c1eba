#import "Box.h"

@implementation Container
- (NSString *)inherited { return @"inherited"; }
@end
