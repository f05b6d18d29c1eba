// Methods to hook, and the same ones to leave alone.
#import <Foundation/Foundation.h>

typedef struct CGPoint {
  double x, y;
} CGPoint;
typedef struct CGSize {
  double width, height;
} CGSize;
typedef struct CGRect {
  CGPoint origin;
  CGSize size;
} CGRect;

@interface Peer : NSObject
@end

@implementation Peer
- (int)number { return 4; }
- (int)other { return 4; }
- (double)real { return 0.25; }
- (id)text { return @"original"; }
- (CGRect)rect { return (CGRect){{1, 2}, {3, 4}}; }
- (id)itself { return self; }
@end

@interface HookedPeer : Peer
@end

@implementation HookedPeer
@end
