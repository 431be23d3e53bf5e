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
        // Characters no text file carries are refused before any separator too: the
        // whole name is quoted.
        {"A\x1f\\B", "\"A\x1f\\B\" (a file name cannot contain control characters)"},
        {"A\x1f/B", "\"A\x1f/B\" (a file name cannot contain control characters)"},
        {"del\x7f", "\"del\x7f\" (a file name cannot contain control characters)"},
        {"csi\u009b", "\"csi\u009b\" (a file name cannot contain control characters)"},
        {"x\ufffe/y", "\"x\ufffe/y\" (a file name cannot contain characters that are not text)"},
        {"\u00e9t\u00e9 \U0001D509", ""},
        {"North.", "\"North.\" (a file name cannot end with a space or a dot)"},
        {"South ", "\"South \" (a file name cannot end with a space or a dot)"},
        {"Con", "\"Con\" (the name is reserved for a device)"},
        {"lpt9.txt", "\"lpt9.txt\" (the name is reserved for a device)"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(ZNFileName::isAcceptable(QString::fromUtf8(c.name)), QString(c.problem).isEmpty());
        EXPECT_EQ(ZNFileName::describeProblem(QString::fromUtf8(c.name)), QString::fromUtf8(c.problem));
    }
}

TEST(FileName, UnpairedSurrogatesAreNotText)
{
    const QChar high(0xd835), low(0xdd09);
    EXPECT_TRUE(ZNFileName::isAcceptable(QString("F") + high + low));
    for (const QString& name : {QString("F") + high, QString(low) + "F", QString("F") + low + high})
        EXPECT_FALSE(ZNFileName::isAcceptable(name));
}

TEST(FileName, TheCompleteBaseNameDropsTheFolderAndTheLastExtension)
{
    const struct { const char* name; const char* base; } cases[] = {
        {"F1", "F1"}, {"F1.v2", "F1"}, {"a.b.c", "a.b"}, {"dir/F.x", "F"},
        {"dir\\F.x", "F"}, {"a.b/c", "c"}, {".hidden", ""}, {"dir/", ""},
    };
    for (const auto& c : cases) EXPECT_EQ(ZNFileName::completeBaseName(c.name), c.base) << c.name;
}
