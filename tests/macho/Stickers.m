// A loadable bundle of the app.
#import "Shapes.h"

@interface Sticker : Shape
@end
@implementation Sticker
- (void)peel { }
@end
