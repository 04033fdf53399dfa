#include "fuzz/mutant.h"

#include <set>

#include <gtest/gtest.h>

namespace boxlift::test {

namespace {

std::string file() {
    std::string bytes;
    for (int i = 0; i < 40; ++i)
        bytes.append(std::string("\0\0\0\x18", 4)).append("moov").append(16, static_cast<char>(i));
    return bytes;
}

} // namespace

TEST(Mutant, IsTheSameForTheSameNumber) {
    const std::string whole = file();
    for (std::uint32_t number = 0; number < 100; ++number) {
        const Mutant first = mutate(whole, number);
        const Mutant second = mutate(whole, number);
        EXPECT_EQ(first.bytes, second.bytes);
        EXPECT_EQ(first.damage, second.damage);
        EXPECT_FALSE(first.damage.empty());
    }
}

TEST(Mutant, IsAnotherForAnotherNumber) {
    const std::string whole = file();
    std::set<std::string> different;
    int unharmed = 0;
    for (std::uint32_t number = 0; number < 1000; ++number) {
        const Mutant mutant = mutate(whole, number);
        unharmed += mutant.bytes == whole ? 1 : 0;
        different.insert(mutant.bytes);
    }
    // Equal pieces may be swapped, a lie may be the truth.
    EXPECT_GT(different.size(), 900U);
    EXPECT_LT(unharmed, 20);
}

TEST(Mutant, HasEveryKindOfDamage) {
    const std::string whole = file();
    std::string damage;
    for (std::uint32_t number = 0; number < 200; ++number)
        damage += mutate(whole, number).damage + '\n';
    for (const char* kind : {"cut off at", "cut out at", "swapped with", "doubled at", "flipped",
                             "set to 0 at", "set to 4294967295 at", "(little-endian)"})
        EXPECT_NE(damage.find(kind), std::string::npos) << kind;
}

TEST(Mutant, OfAFileOfAFewBytesIsPossible) {
    for (std::uint32_t number = 0; number < 1000; ++number) {
        EXPECT_EQ(mutate("", number).bytes, "");
        EXPECT_LE(mutate("abc", number).bytes.size(), 24U);
    }
}

} // namespace boxlift::test
