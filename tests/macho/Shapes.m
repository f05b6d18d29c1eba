// Every kind of class, method and category that a compiler of the C family makes.
#import "Shapes.h"

typedef float Vector __attribute__((ext_vector_type(4)));
typedef struct { unsigned kind : 3, : 0, shade : 5; } Style;
typedef union Number { int whole; double real; unsigned char bytes[8]; } Number;
typedef struct Node { struct Node *next; const char *text; id owner; void (^release)(struct Node *); } Node;
// A type whose encoding is longer than any buffer of a usual size: eight to the fifth power of a letter.
typedef struct { int a, b, c, d, e, f, g, h; } Eight;
typedef struct { Eight a, b, c, d, e, f, g, h; } Eight2;
typedef struct { Eight2 a, b, c, d, e, f, g, h; } Eight3;
typedef struct { Eight3 a, b, c, d, e, f, g, h; } Eight4;

static NSUInteger made;

// Without a superclass, methods or protocols.
__attribute__((objc_root_class))
@interface Origin
@end
@implementation Origin
@end

@implementation Shape {
  NSString *_title;
  CGRect _frame;
  Style _style;
}
+ (void)load { made = 1; }
+ (NSUInteger)made { return made; }
+ (void)setMade:(NSUInteger)count { made = count; }
+ (NSUInteger)layerCount { return 1; }
- (NSString *)title { return _title; }
- (void)setTitle:(NSString *)title { _title = title; }
- (CGRect)frame { return _frame; }
- (void)setFrame:(CGRect)frame { _frame = frame; }
- (CGSize)drawnSize { return _frame.size; }
- (void)drawInRect:(CGRect)rect { _frame = rect; }
- (id)copyWithZone:(NSZone *)zone { return self; }
- (BOOL)isEqual:(id)object { return self == object; }
- (double)area { return 0; }
@end

@implementation Circle
+ (void)load { ++made; }
- (double)area { return 3; }
@end

// Only class methods.
@interface ShapeFactory : NSObject
@end
@implementation ShapeFactory
+ (id)shapeWithPoints:(const CGPoint *)points count:(NSUInteger)count closed:(_Bool)closed { return 0; }
+ (id)shape { return 0; }
@end

// Types of every sort.
@interface Types : Shape
@end
@implementation Types
- (Number)number:(Number *)number times:(const Number *const *)times { return *number; }
- (void)walk:(Node *)node then:(void (^)(Node *, NSString *))block { }
- (Vector)vector:(Vector)vector with:(int)factor { return vector; }
- (long double)wide:(__int128)integer and:(unsigned __int128)other complex:(_Complex double)complex { return 0; }
- (void)array:(int (*)[4])array function:(int (*)(int, char))function { }
- (Class)metaclass:(SEL)selector protocol:(id<Drawing, NSCopying>)object { return 0; }
- (oneway void)remote:(in bycopy id)value result:(out id *)result inout:(inout int *)count { }
- (Style)style:(char)a :(short)b :(long)c :(long long)d :(unsigned char)e :(unsigned short)f { return (Style){0}; }
- (void)large:(Eight4 *)value { }
- (void):(int)first :(int)second { }
@end

// Names that a language with other identifiers has.
@interface Größe : NSObject
@end
@implementation Größe
- (double)länge { return 0; }
+ (id)大きさ:(double)値 { return 0; }
@end

// Categories on the image's own classes: of the two that replace a method, the one attached last comes first.
@protocol Outlined
- (double)outline;
@end
@interface Shape (Outline) <Outlined>
@end
@implementation Shape (Outline)
+ (void)load { ++made; }
- (double)outline { return 1; }
- (double)area { return 1; }
+ (id)outlinedShape { return 0; }
@end
@interface Shape (Fill)
@property (class, readonly) int fills;
@end
@implementation Shape (Fill)
- (double)area { return 2; }
+ (int)fills { return 0; }
@end
