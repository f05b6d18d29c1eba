// Classes of the test program itself.
#import <objc/Object.h>

@interface SampleOfProgram : Object
@end
@implementation SampleOfProgram
@end

@interface SampleBelowProgram : SampleOfProgram
@end
@implementation SampleBelowProgram
@end
