#include "effects/CompiledForm.h"

#include "effects/EffectFiles.h"
#include "effects/EffectSource.h"

#include <gtest/gtest.h>

using namespace tavlo::effects;

namespace {

CompiledForm makeForm()
{
    std::string error;
    const std::string pass = "pass quad mixed\n";
    const std::string source = tavlo::test::replaced(tavlo::test::mixEffect, pass, pass + " variant channel=-1\n");
    CompiledForm form{"driver", parseEffect(source, "mix.fx", error)->description, {}};
    form.binaries = {{std::byte{1}, std::byte{200}, std::byte{3}}, {}};
    return form;
}

TEST(CompiledForm, comesBackWholeOrNotAtAll)
{
    const CompiledForm form = makeForm();
    std::vector<std::byte> bytes = writeCompiled(form);
    EXPECT_EQ(readCompiled(bytes), form);
    for (std::size_t length = 0; length < bytes.size(); ++length)
        EXPECT_FALSE(readCompiled(std::span(bytes).first(length))) << length;
    bytes.push_back(std::byte{0});
    EXPECT_FALSE(readCompiled(bytes));
}

TEST(CompiledForm, noByteOfItMakesTheReaderStumble)
{
    // Each byte in turn: what is read has to hold together, whatever it says.
    const std::vector<std::byte> bytes = writeCompiled(makeForm());
    int refused = 0;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        std::vector<std::byte> broken = bytes;
        broken[at] = ~broken[at];
        const auto form = readCompiled(broken);
        refused += form ? 0 : 1;
        if (form) {
            EXPECT_EQ(faultOf(form->description), "") << at;
            EXPECT_EQ(writeCompiled(*form).size(), broken.size()) << at;
        }
    }
    EXPECT_GT(refused, static_cast<int>(bytes.size() / 3));
}

TEST(CompiledForm, aFormThatContradictsItselfIsNone)
{
    const auto refuses = [](auto change) {
        CompiledForm form = makeForm();
        change(form, form.description);
        return !readCompiled(writeCompiled(form));
    };
    EXPECT_TRUE(refuses([](auto& form, auto&) { form.binaries.clear(); }));
    EXPECT_TRUE(refuses([](auto&, auto& effect) { effect.techniques[0].passes[0].program = 2; }));
    EXPECT_TRUE(refuses([](auto&, auto& effect) { effect.techniques[0].passes[0].variants = {9}; }));
    EXPECT_TRUE(refuses([](auto&, auto& effect) { effect.programs[0].fixed = {{0, 1}}; }));
    EXPECT_TRUE(refuses([](auto&, auto& effect) { effect.programs[1].fixed = {{99, 1}}; }));
    EXPECT_TRUE(refuses([](auto&, auto& effect) { effect.variables[0].count = 2; }));
    EXPECT_TRUE(refuses([](auto&, auto& effect) { effect.variables[4].count = 100000; }));
    EXPECT_TRUE(refuses([](auto&, auto& effect) { effect.variables[0].initial.push_back(1); }));
    EXPECT_TRUE(refuses([](auto&, auto& effect) { effect.variables[1].name = "amount"; }));
    EXPECT_FALSE(refuses([](auto&, auto&) {}));
}

} // namespace
