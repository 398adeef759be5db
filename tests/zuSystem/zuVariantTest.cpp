#include <zuSystem/zuVariant.h>

#include <gtest/gtest.h>

#include <limits>

using zu::zuVariant;
using Map = zuVariant::zuVariantMapImpl;

TEST(zuVariantTest, ConversionsAndTheirBoundaries)
{
    EXPECT_EQ(zuVariant(true).toInt(), 1);
    EXPECT_EQ(zuVariant(-3.9).toInt64(), -3);
    EXPECT_FALSE(zuVariant(0).toBool(true));
    EXPECT_TRUE(zuVariant("true").toBool());
    EXPECT_FALSE(zuVariant("0").toBool(true));
    EXPECT_EQ(zuVariant(" +42 ").toInt(), 42);
    EXPECT_EQ(zuVariant("2.75").toInt(), 2);
    EXPECT_EQ(zuVariant("1e3").toInt64(), 1000);
    EXPECT_EQ(zuVariant("false").toDouble(-1.0), 0.0);
    // Large 64-bit values do not pass through a double.
    const int64_t big = std::numeric_limits<int64_t>::max();
    EXPECT_EQ(zuVariant(std::to_string(big)).toInt64(), big);

    // No value, or one outside the target range: the default comes back.
    EXPECT_EQ(zuVariant(int64_t(1) << 40).toInt(-1), -1);
    EXPECT_EQ(zuVariant("99999999999").toInt(-1), -1);
    EXPECT_EQ(zuVariant(1e300).toInt64(-1), -1);
    EXPECT_EQ(zuVariant(std::numeric_limits<double>::quiet_NaN()).toInt(-1), -1);
    EXPECT_EQ(zuVariant("12abc").toInt(-1), -1);
    EXPECT_EQ(zuVariant("+-5").toInt(-1), -1);
    EXPECT_EQ(zuVariant("").toDouble(-1.0), -1.0);
    EXPECT_TRUE(zuVariant("maybe").toBool(true));
    EXPECT_EQ(zuVariant(static_cast<void*>(nullptr)).toInt(-1), -1);
    EXPECT_EQ(zuVariant(5).toMap(), nullptr);
}

TEST(zuVariantTest, ToStringRoundTrips)
{
    EXPECT_EQ(zuVariant(int64_t(1) << 40).toString(), "1099511627776");
    EXPECT_EQ(zuVariant(false).toString(), "false");
    EXPECT_EQ(zuVariant(0.1).toString(), "0.1");
    EXPECT_EQ(zuVariant(2.0).toString(), "2");
    EXPECT_EQ(zuVariant().toString(), "");
    for (double value : {1.0 / 3.0, 1e-310, 123456789.123456789, 1e300})
        EXPECT_EQ(zuVariant(zuVariant(value).toString()).toDouble(), value) << value;
}

TEST(zuVariantTest, CopiesAreDeep)
{
    const zuVariant original(Map{{"a", zuVariant(Map{{"b", zuVariant(1)}})}});
    zuVariant copy(original), assigned;
    assigned = original;
    for (zuVariant* changed : {&copy, &assigned}) {
        (*(*changed->toMap())["a"].toMap())["b"] = zuVariant(2);
        EXPECT_EQ(original.toMap()->value("a").toMap()->value("b").toInt(), 1);
        EXPECT_NE(original, *changed);
    }
}

TEST(zuVariantTest, AssignFromOwnElement)
{
    // The right-hand side lives inside the left-hand side's own map.
    const Map outer{{"child", zuVariant(Map{{"k", zuVariant("leaf")}})}};
    zuVariant copied(outer);
    copied = (*copied.toMap())["child"];
    ASSERT_EQ(copied.getType(), zuVariant::Map);
    EXPECT_EQ(copied.toMap()->value("k").toString(), "leaf");

    zuVariant moved(outer);
    moved = std::move((*moved.toMap())["child"]);
    ASSERT_EQ(moved.getType(), zuVariant::Map);
    EXPECT_EQ(moved.toMap()->value("k").toString(), "leaf");
}

TEST(zuVariantTest, EqualityAndMapLookup)
{
    EXPECT_EQ(zuVariant(), zuVariant());
    EXPECT_NE(zuVariant(1), zuVariant(int64_t(1)));
    EXPECT_NE(zuVariant(1), zuVariant(1.0));
    EXPECT_NE(zuVariant("1"), zuVariant(1));

    Map a{{"x", zuVariant(1)}, {"y", zuVariant("s")}};
    Map b = a;
    EXPECT_EQ(zuVariant(a), zuVariant(b));
    b["y"] = zuVariant("t");
    EXPECT_NE(zuVariant(a), zuVariant(b));

    EXPECT_FALSE(a.value("absent").isValid());
    EXPECT_EQ(a.value("x"), zuVariant(1));
}
