// What the framework Shapes offers to the app and its bundle.
#import "System.h"

@protocol Drawing <NSObject>
- (void)drawInRect:(CGRect)rect;
+ (NSUInteger)layerCount;
@optional
- (id)preferredColor;
@property(nonatomic, readonly) CGSize drawnSize;
@end

@interface Shape : NSObject <Drawing, NSCopying>
@property(class, nonatomic) NSUInteger made;
@property(nonatomic, copy) NSString* title;
@property(nonatomic) CGRect frame;
- (double)area;
@end

@interface Circle : Shape
- (double)area;
@end
