#include "VLK/DoubleLink.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace VLK::Misc;

namespace {

struct SLinked : TDoubleLinkedObject<SLinked> {
    explicit SLinked(char letter) : name(letter) {}
    char name;
};

std::string Names(TDoubleLinkHead<SLinked> const & list)
{
    std::string names;
    for (SLinked * object = list.First(); object != nullptr; object = list.Next(*object))
        names += object->name;
    return names;
}

std::string NamesBackwards(TDoubleLinkHead<SLinked> const & list)
{
    std::string names;
    for (SLinked * object = list.Last(); object != nullptr; object = list.Previous(*object))
        names += object->name;
    return names;
}

} // namespace

class DoubleLinkTest : public testing::Test {
protected:
    SLinked m_A{'a'}, m_B{'b'}, m_C{'c'};
    TDoubleLinkHead<SLinked> m_List;
};

TEST_F(DoubleLinkTest, EmptyListHasNoEnds)
{
    EXPECT_TRUE(m_List.IsEmpty());
    EXPECT_EQ(nullptr, m_List.First());
    EXPECT_EQ(nullptr, m_List.Last());
}

TEST_F(DoubleLinkTest, KeepsTheOrderOfAddingAtEitherEnd)
{
    m_List.AddLast(m_B);
    m_List.AddLast(m_C);
    m_List.AddFirst(m_A);
    EXPECT_EQ("abc", Names(m_List));
    EXPECT_EQ("cba", NamesBackwards(m_List));
}

TEST_F(DoubleLinkTest, AnObjectUnlinksItselfInPlace)
{
    m_List.AddLast(m_A);
    m_List.AddLast(m_B);
    m_List.AddLast(m_C);
    m_B.Unlink();
    EXPECT_FALSE(m_B.IsLinked());
    EXPECT_EQ("ac", Names(m_List));
    m_B.Unlink(); // once more changes nothing
    EXPECT_EQ("ca", NamesBackwards(m_List));
}

TEST_F(DoubleLinkTest, AddingMovesFromOneListToAnother)
{
    TDoubleLinkHead<SLinked> other;
    m_List.AddLast(m_A);
    m_List.AddLast(m_B);
    other.AddLast(m_A);
    EXPECT_EQ("b", Names(m_List));
    EXPECT_EQ("a", Names(other));
}

TEST_F(DoubleLinkTest, AddingAgainMovesToTheEndOrStays)
{
    m_List.AddLast(m_A);
    m_List.AddLast(m_B);
    m_List.AddLast(m_A);
    EXPECT_EQ("ba", Names(m_List));
    m_List.AddLast(m_A);
    EXPECT_EQ("ba", Names(m_List));
    m_List.AddFirst(m_B);
    EXPECT_EQ("ba", Names(m_List));
}

TEST_F(DoubleLinkTest, AnEndingObjectLeavesItsList)
{
    auto object = std::make_unique<SLinked>('x');
    m_List.AddLast(m_A);
    m_List.AddLast(*object);
    object.reset();
    EXPECT_EQ("a", Names(m_List));
}

TEST_F(DoubleLinkTest, AnEndingListUnlinksItsObjects)
{
    {
        TDoubleLinkHead<SLinked> shortLived;
        shortLived.AddLast(m_A);
        shortLived.AddLast(m_B);
    }
    EXPECT_FALSE(m_A.IsLinked());
    EXPECT_FALSE(m_B.IsLinked());
}
