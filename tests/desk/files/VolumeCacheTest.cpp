#include <gtest/gtest.h>

#include "desk/core/durable/VolumeProperties.h"

namespace {

using desk::FindCacheTime;
using std::chrono::seconds;

TEST(VolumeCacheTest, TakesTheLongestTimeThatTheMountNames) {
    EXPECT_EQ(FindCacheTime("nfs4", "rw,vers=4.2,acregmin=3,acregmax=5,acdirmax=9"), seconds(9));
    EXPECT_EQ(FindCacheTime("nfs4", "rw,acregmax=5"), seconds(60)) << "acdirmax is the default then";
    EXPECT_EQ(FindCacheTime("nfs", "rw,vers=3"), seconds(60));
    EXPECT_EQ(FindCacheTime("nfs", "rw,noac"), seconds(0));
    EXPECT_EQ(FindCacheTime("cifs", "rw,actimeo=3,closetimeo=1"), seconds(3));
    EXPECT_EQ(FindCacheTime("fuse.sshfs", "rw"), seconds(20));
    EXPECT_EQ(FindCacheTime("fuse.other", "rw"), seconds(5));
    EXPECT_EQ(FindCacheTime("ext4", "rw,relatime"), seconds(1));
    EXPECT_EQ(FindCacheTime("cifs", "actimeo=999999999999"), seconds(600)) << "nobody waits for ever";
    EXPECT_EQ(FindCacheTime("cifs", "acregmax=x"), seconds(0)) << "no number";
}

TEST(VolumeCacheTest, FindsTheMountOfAPath) {
    EXPECT_EQ(FindCacheTime("/proc"), seconds(1));
    EXPECT_FALSE(FindCacheTime("/no such folder")) << "nothing is known of its volume";
}

}  // namespace
