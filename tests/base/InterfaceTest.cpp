#include <tavlo/InterfacePtr.h>

#include <gtest/gtest.h>

#include <type_traits>

namespace {

template <quint32 number>
class INumbered : public IUnknownEx
{
public:
    using Number = std::integral_constant<quint32, number>;
    static constexpr TavloInterfaceId interfaceId{number, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    virtual quint32 answer(Number) = 0;

protected:
    ~INumbered() = default;
};

using IFirst = INumbered<1>;
using ISecond = INumbered<2>;

class Both final : public tavlo::Implements<Both, IFirst, ISecond>
{
public:
    explicit Both(int& living) : _living(living) { ++_living; }
    ~Both() { --_living; }
    bool isValid() override { return valid; }
    quint32 answer(IFirst::Number) override { return 1; }
    quint32 answer(ISecond::Number) override { return 2; }

    bool valid = true;

private:
    int& _living;
};

struct Counted
{
    int addRef() { return ++count; }
    int release() { return --count; }
    int count = 1;
};

} // namespace

TEST(InterfaceTest, EachLeadsToEveryOtherAndEndsTheObjectUnlessInvalid)
{
    int living = 0;
    auto* const object = new Both(living);
    auto* const second = tavlo::query<ISecond>(static_cast<IFirst*>(object));
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->answer({}), 2U);
    EXPECT_EQ(tavlo::query<IFirst>(second), object);
    EXPECT_EQ(object->queryInterface({}, TavloInterfaceVersion), nullptr);
    object->valid = false;
    object->destroy();
    EXPECT_EQ(living, 1);
    object->valid = true;
    second->destroy();
    EXPECT_EQ(living, 0);
    tavlo::InterfacePtr<IFirst>(new Both(living)).reset();
    EXPECT_EQ(living, 0);
}

TEST(InterfaceTest, AnswersForItsVersionsOnly)
{
    for (const quint32 fits : {0x01010100U, 0x01010000U, 0x010101ffU})
        EXPECT_TRUE(tavlo::acceptsInterfaceVersion(fits)) << std::hex << fits;
    for (const quint32 differs : {0U, 0x01010200U, 0x01000100U, 0x01020100U, 0x02010100U, 0x00010100U})
        EXPECT_FALSE(tavlo::acceptsInterfaceVersion(differs)) << std::hex << differs;
}

TEST(InterfaceTest, CountedPointerKeepsTheCount)
{
    using Pointer = tavlo::CountedPtr<Counted>;
    Counted object;
    {
        Pointer adopted = Pointer::adopt(&object), shared = Pointer::share(&object);
        Pointer copy = shared;
        EXPECT_EQ(object.count, 3);
        copy = std::move(shared);
        EXPECT_EQ(object.count, 2);
        EXPECT_EQ(adopted.take(), &object);
    }
    EXPECT_EQ(object.count, 1);
}
