#include <gtest/gtest.h>

#include <core/assertion.h>

#include <testservices.h>

TEST(Assertion, PrintsTheFixedLineAndCarriesOn)
{
    StderrCapture err;
    core::reportAssertion("recordSize == 8 || recordSize == 4",
                          "ZN3DObjectDraw::getEstimatedFileSize", "zanthor/code/3dobject/x", 12);
    EXPECT_EQ(err.text().toStdString(),
              "ERROR: assert fail (recordSize == 8 || recordSize == 4) in "
              "ZN3DObjectDraw::getEstimatedFileSize at zanthor/code/3dobject/x: 12\n");
}

TEST(Assertion, CheckMacroReportsOnlyFalseConditionsAndReturnsThem)
{
    StderrCapture err;
    const int* p = nullptr;
    EXPECT_TRUE(CORE_CHECK(1 + 1 == 2, "f", "s"));
    EXPECT_FALSE(CORE_CHECK(p != nullptr, "Cls::fn", "dir/file"));
    const std::string text = err.text().toStdString();
    EXPECT_EQ(text.rfind("ERROR: assert fail (p != nullptr) in Cls::fn at dir/file: ", 0), 0u);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1);
}
