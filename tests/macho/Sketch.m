// An app's main program: its classes inherit from a framework's, and its categories extend other images' classes.
#import "Shapes.h"

// Names as Swift gives them to classes: of a module, nested in another type, and private to a file.
__attribute__((objc_runtime_name("_TtC6Sketch6Canvas")))
@interface Canvas : UIView
@end
@implementation Canvas
- (void)clear { }
@end
__attribute__((objc_runtime_name("_TtCC6Sketch6Canvas5Layer")))
@interface Layer : Canvas
@end
@implementation Layer
- (void)flatten { }
@end
__attribute__((objc_runtime_name("_TtC6SketchP33_0123456789ABCDEF0123456789ABCDEF6Hidden")))
@interface Hidden : NSObject
@end
@implementation Hidden
@end
__attribute__((objc_runtime_name("_TtP6Sketch7Erasing_")))
@protocol Erasing
- (void)erase;
@end

@interface Eraser : Circle <Erasing>
@end
@implementation Eraser
- (void)erase { }
+ (id)sharedEraser { return 0; }
@end

@interface UIView (Sketch) <Drawing>
@end
@implementation UIView (Sketch)
- (void)drawInRect:(CGRect)rect { }
- (BOOL)isEqual:(id)object { return 0; }
- (CGSize)drawnSize { return (CGSize){0, 0}; }
+ (NSUInteger)layerCount { return 2; }
@end
@interface Circle (Sketch)
@end
@implementation Circle (Sketch)
- (double)circumference { return 6; }
@end
@interface Canvas (Undo)
@end
@implementation Canvas (Undo)
- (void)undo { }
@end

int main(void) { return 0; }
