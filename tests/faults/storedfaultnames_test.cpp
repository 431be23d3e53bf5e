#include <gtest/gtest.h>

#include <storedfaultnames.h>
#include <zn3dfaultpatchlight.h>
#include <znfaultpatchmanager.h>
#include <znfilename.h>

namespace {
QStringList storedForms(const QStringList& names)
{
    QStringList out;
    for (const QString& n : names) out << ZNFileName::completeBaseName(n);
    return out;
}
} // namespace

TEST(StoredFaultNames, NamesStoredAlikeAreNumberedBeforeTheDroppedExtension)
{
    const struct Case {
        QStringList names, expected;
        std::vector<int> renamed;
    } cases[] = {
        {{"F.1", "F.2"}, {"F.1", "F (2).2"}, {1}},
        {{"North/South", "South"}, {"North/South", "South (2)"}, {1}},
        {{"F", "F.x", "F (2)", "F.y"}, {"F", "F (3).x", "F (2)", "F (4).y"}, {1, 3}},
        {{"a.b.c", "a.b.d"}, {"a.b.c", "a.b (2).d"}, {1}},
        {{"dir\\F", "F", "G"}, {"dir\\F", "F (2)", "G"}, {1}},
        {{"F", "f", "G.1"}, {"F", "f", "G.1"}, {}},
        {{}, {}, {}},
    };
    for (const Case& c : cases) {
        QStringList names = c.names;
        const std::vector<fault::RenamedFault> renamed = fault::makeStoredNamesUnique(names);
        EXPECT_EQ(names, c.expected) << c.names.join('|').toStdString();
        std::vector<int> indices;
        for (const fault::RenamedFault& r : renamed) {
            indices.push_back(r.index);
            EXPECT_EQ(r.from, c.names[r.index]);
            EXPECT_EQ(r.to, names[r.index]);
            EXPECT_EQ(r.storedAs, ZNFileName::completeBaseName(r.to));
            EXPECT_EQ(ZNFileName::completeBaseName(r.firstName), ZNFileName::completeBaseName(r.from));
        }
        EXPECT_EQ(indices, c.renamed);
        EXPECT_EQ(storedForms(names).removeDuplicates(), 0);
    }
}

TEST(StoredFaultNames, DescriptorsOfAFaultSetAreRenamedInListOrder)
{
    ZNFaultPatchManager set(4);
    const char* names[] = {"F.1", "F.2", "F.3"};
    for (int id = 1; id <= 3; ++id) set.insertNewFaultLight(id)->SetFaultName(names[id - 1]);
    const auto renamed = fault::makeStoredFaultNamesUnique(set);
    ASSERT_EQ(renamed.size(), 2u);
    EXPECT_EQ(set.findFaultLight(1)->GetFaultName(), "F.1");
    EXPECT_EQ(set.findFaultLight(2)->GetFaultName(), "F (2).2");
    EXPECT_EQ(set.findFaultLight(3)->GetFaultName(), "F (3).3");
}
