#include "ClipStoreError.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace tessly::test {

TEST(ClipStoreError, describesItselfByTheCaseAndTheMessage)
{
    using Case = ClipStoreError::Case;
    const auto describe = [](Case errorCase) {
        const ClipStoreError error(errorCase, u"é."_s);
        EXPECT_EQ(error.errorCase(), errorCase);
        EXPECT_EQ(error.message(), u"é."_s);
        EXPECT_EQ(QString::fromUtf8(error.what()), error.description());
        return error.description().toStdString();
    };
    EXPECT_EQ(describe(Case::openDatabase), "Could not open clipboard database: é.");
    EXPECT_EQ(describe(Case::corruptedDatabase), "Clipboard database integrity check failed: é.");
    EXPECT_EQ(describe(Case::prepare), "Could not prepare database query: é.");
    EXPECT_EQ(describe(Case::execute), "Clipboard database operation failed: é.");
    EXPECT_EQ(describe(Case::bind), "Could not bind clipboard data: é.");
    EXPECT_EQ(describe(Case::decode), "Could not decode clipboard data: é.");
}

} // namespace tessly::test
