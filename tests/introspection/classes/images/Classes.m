// An image of classes; DynamicClassParserTests.cpp holds what a parser makes of it.
#import <objc/Object.h>

struct Point {
  double x, y;
};
struct Box {
  struct Point origin;
  unsigned char depth;
};

@protocol SampleNaming
- (const char *)name;
@end
@protocol SampleDrawing <SampleNaming>
- (void)drawIn:(struct Box *)box at:(struct Point)point;
@end

// The names descend, so that neither they nor their order in a hash table are that of the definitions.
@interface SampleRoot {
  Class isa;
}
+ (id)make;
- (int)tag;
@end
@implementation SampleRoot
+ (id)make { return 0; }
- (int)tag { return 1; }
@end

@interface SamplePicture : SampleRoot <SampleDrawing, SampleNaming>
@end
@implementation SamplePicture
- (void)drawIn:(struct Box *)box at:(struct Point)point { box->origin = point; }
- (const char *)name { return "picture"; }
@end

@interface SamplePicture (Tagged)
+ (id)name;
@end
@implementation SamplePicture (Tagged)
+ (id)name { return 0; }
- (const char *)name { return "tagged"; }
@end

@interface SampleBare : SamplePicture
@end
@implementation SampleBare
@end

@interface SampleAlien : Object
@end
@implementation SampleAlien
- (struct Box)boxOf:(bycopy id)object { return (struct Box){{0, 0}, object != 0}; }
@end
