#include <tavlo/InterfacePtr.h>

#include <gtest/gtest.h>

namespace {

class IFirst : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    virtual int first() = 0;

protected:
    ~IFirst() = default;
};

class ISecond : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    virtual int second() = 0;

protected:
    ~ISecond() = default;
};

class Both final : public tavlo::Implements<Both, IFirst, ISecond>
{
public:
    explicit Both(int& living) : _living(living) { ++_living; }
    ~Both() { --_living; }
    bool isValid() override { return valid; }
    int first() override { return 1; }
    int second() override { return 2; }

    bool valid = true;

private:
    int& _living;
};

class Counted
{
public:
    int addRef() { return ++count; }
    int release() { return --count; }
    int count = 1;
};

} // namespace

TEST(InterfaceTest, EachInterfaceLeadsToEveryOther)
{
    int living = 0;
    {
        const tavlo::InterfacePtr<IFirst> first(new Both(living));
        auto* const second = tavlo::query<ISecond>(first.get());
        ASSERT_NE(second, nullptr);
        EXPECT_EQ(second->second(), 2);
        EXPECT_EQ(tavlo::query<IFirst>(second), first.get());
        EXPECT_EQ(first->queryInterface({}, TavloInterfaceVersion), nullptr);
    }
    EXPECT_EQ(living, 0);
}

TEST(InterfaceTest, AnswersForItsVersionsOnly)
{
    for (const quint32 fits : {0x01010100U, 0x01010000U, 0x010101ffU})
        EXPECT_TRUE(tavlo::acceptsInterfaceVersion(fits)) << std::hex << fits;
    for (const quint32 differs : {0U, 0x01010200U, 0x01000100U, 0x01020100U, 0x02010100U, 0x00010100U})
        EXPECT_FALSE(tavlo::acceptsInterfaceVersion(differs)) << std::hex << differs;
}

TEST(InterfaceTest, DestroyLeavesAnInvalidObject)
{
    int living = 0;
    auto* const object = new Both(living);
    object->valid = false;
    object->destroy();
    EXPECT_EQ(living, 1);
    object->valid = true;
    tavlo::query<ISecond>(object)->destroy();
    EXPECT_EQ(living, 0);
}

TEST(InterfaceTest, CountedPointerKeepsTheCount)
{
    Counted object;
    {
        auto adopted = tavlo::CountedPtr<Counted>::adopt(&object);
        EXPECT_EQ(object.count, 1);
        auto shared = tavlo::CountedPtr<Counted>::share(&object);
        auto copy = shared;
        EXPECT_EQ(object.count, 3);
        copy = std::move(shared);
        EXPECT_EQ(object.count, 2);
        EXPECT_EQ(adopted.take(), &object);
    }
    EXPECT_EQ(object.count, 1);
}
