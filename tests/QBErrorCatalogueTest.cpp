#include "support/PoolFixture.h"

// That each text takes the values that really come with its number is checked by every test that raises one
// (tests/support/ErrorExpectation.cpp).
struct QBErrorCatalogueTest : PoolFixture {
    ~QBErrorCatalogueTest() override { ERRORHANDLER = recordingErrorHandler(); }
};

TEST_F(QBErrorCatalogueTest, TheLibrarysNumbersAreWorded) {
    QBErrorCatalogue *const catalogue = QBErrorCatalogue::errorHandler();
    ERRORHANDLER = catalogue;
    catalogue->raiseErrorInFile("src/A", 1, qb::kErrorCannotWrite, "a/b"_ns, "No space left on device");
    EXPECT_EQ(catalogue->errorMessage()->view(),
              "[100024] The file 'a/b' could not be written: No space left on device");
}

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
