#include <gtest/gtest.h>

#include <znfilename.h>

TEST(FileName, OnlyTheFileNamePartIsJudgedByTheRulesOfTheStrictestPlatform)
{
    struct Case {
        const char* name;
        const char* problem;  // empty for an acceptable name
    };
    const Case cases[] = {
        {"F1", ""},
        {"dir/F1.v2", ""},
        {"a:b/ok", ""},
        {"con-fault", ""},
        {"A:B", "\"A:B\" (a file name cannot contain ':')"},
        {"dir\\what?", "\"what?\" (a file name cannot contain '?')"},
        {"", "\"\" (a file name cannot be empty)"},
        {"dir/", "\"\" (a file name cannot be empty)"},
        {"..", "\"..\" (a file name cannot be a directory reference)"},
        {"tab\tname", "\"tab\tname\" (a file name cannot contain control characters)"},
        {"North.", "\"North.\" (a file name cannot end with a space or a dot)"},
        {"South ", "\"South \" (a file name cannot end with a space or a dot)"},
        {"Con", "\"Con\" (the name is reserved for a device)"},
        {"lpt9.txt", "\"lpt9.txt\" (the name is reserved for a device)"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(ZNFileName::isAcceptable(c.name), QString(c.problem).isEmpty());
        EXPECT_EQ(ZNFileName::describeProblem(c.name), c.problem);
    }
}
