// The little of the system that the fixtures' sources need: no platform headers are at hand.
#pragma once

typedef _Bool BOOL;
typedef unsigned long NSUInteger;
typedef struct _NSZone NSZone;
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

@protocol NSObject
- (BOOL)isEqual:(id)object;
@end

@protocol NSCopying
- (id)copyWithZone:(NSZone*)zone;
@end

__attribute__((objc_root_class))
@interface NSObject<NSObject>
@end

@class NSString;

@interface UIView : NSObject
@end
