#include "support/PoolFixture.h"

// That each text takes the values that really come with its number is checked by every test that raises one
// (tests/support/ErrorExpectation.cpp).
using QBErrorCatalogueTest = PoolFixture;

TEST_F(QBErrorCatalogueTest, TextsTakeTheListedValues) {
    int before = 0;
    for (const qb::ErrorNumber &error : qb::kErrorNumbers) {
        EXPECT_LT(before, error.number); // sorted, none twice
        before = error.number;
        const std::string_view format = error.format;
        EXPECT_EQ(std::count(format.begin(), format.end(), '%'), listedValueCount(error)) << error.number;
        EXPECT_EQ(format.find("%%"), std::string_view::npos) << error.number;
    }
}
