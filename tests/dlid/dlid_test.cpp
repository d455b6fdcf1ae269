// Behaviour of the driver-licence parser that the conformance data cannot
// show: the issuer table and the stripe's clock.
#include <gtest/gtest.h>

#include "dlid/dlid_issuers.h"

namespace {

TEST(DlidIssuers, Lookup) {
    using parser::dlid::issuerForIin;
    EXPECT_EQ(issuerForIin("636027"), "State Dept. (Diplomatic)");
    EXPECT_EQ(issuerForIin("636026"), "AZ");
    EXPECT_EQ(issuerForIin("36026"), "AZ");
    EXPECT_EQ(issuerForIin("990876"), "AB");
    EXPECT_EQ(issuerForIin("604432"), "AB");
    EXPECT_EQ(issuerForIin("123456"), "123456");
    EXPECT_EQ(issuerForIin("HIDE2"), "HIDE2");
    EXPECT_EQ(issuerForIin(""), "");
}

}  // namespace
