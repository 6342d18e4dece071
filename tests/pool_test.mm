#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

#include "platform/autorelease_pool.h"

static int deallocations = 0;

@interface CountedObject : NSObject
@end

@implementation CountedObject
- (void)dealloc {
  ++deallocations;
  [super dealloc];
}
@end

TEST(AutoreleasePool, ReleasesItsObjectsWhenItEnds) {
  const AutoreleasePool outer;
  {
    const AutoreleasePool inner;
    [[[CountedObject alloc] init] autorelease];
    EXPECT_EQ(deallocations, 0);
  }
  EXPECT_EQ(deallocations, 1);
}
