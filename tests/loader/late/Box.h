// An image whose modules come in the worst order: a class, its superclass, its category.
#import <Foundation/Foundation.h>

@interface Container : NSObject
- (NSString*)inherited;
@end

@interface Box : Container
- (NSString*)own;
@end

@interface Box (Labels)
- (NSString*)label;
@end
