#include "effects/CompiledForm.h"
#include "effects/EffectCompiler.h"

#include "effects/EffectFiles.h"
#include "graphics/GraphicsTest.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

using namespace tavlo::effects;
using namespace tavlo::test;

namespace fs = std::filesystem;

namespace {

class EffectCacheGL : public GraphicsTest
{
public:
    EffectCacheGL()
        : folder(fs::temp_directory_path() / ("tavlo-effects-" + std::to_string(getpid()))), file(folder / "mix.fx")
    {
        fs::create_directories(folder);
    }
    ~EffectCacheGL() override { fs::remove_all(folder); }

    EffectPtr compile(const std::string& source)
    {
        EffectPtr effect;
        std::string errors;
        D3DX11CompileEffectFromMemory(*device, {source, "mix.fx", file}, effect, errors);
        return effect;
    }

    std::string content() const
    {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    void setContent(const std::string& bytes) const { std::ofstream(file, std::ios::binary) << bytes; }

    const fs::path folder, file;
};

// What compiles must have come from the source, what does not can only have come from the cache.
const std::string broken = "no effect at all";

TEST_F(EffectCacheGL, aWrittenFileIsTrustedWithoutALookAtTheSource)
{
    ASSERT_TRUE(compile(mixEffect));
    if (!fs::exists(file))
        GTEST_SKIP() << "the driver gives no program binaries";
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1); // nothing is left beside it
    const std::string written = content();
    const EffectPtr cached = compile(broken);
    ASSERT_TRUE(cached);
    EXPECT_TRUE(cached->GetVariableByName("unread").AsVector().IsValid());
    EXPECT_EQ(cached->GetTechniqueByName("Transprocess").GetPassByIndex(0).Apply(*context), resultOk);
    EXPECT_EQ(content(), written);
}

TEST_F(EffectCacheGL, anEmptyOrBrokenFileIsAMissAndStays)
{
    ASSERT_TRUE(compile(mixEffect));
    if (!fs::exists(file))
        GTEST_SKIP() << "the driver gives no program binaries";
    const std::string good = content();
    auto other = readCompiled(std::as_bytes(std::span(good)));
    ASSERT_TRUE(other);
    const auto text = [&other] {
        const auto bytes = writeCompiled(*other);
        return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    };
    other->driver += " of tomorrow";
    const std::string ofOtherDriver = text();
    other->driver = device->driverIdentity();
    for (std::byte& byte : other->binaries.at(0))
        byte ^= std::byte{0x55};
    for (const std::string& bad :
         {std::string(), std::string("rubbish"), good.substr(0, good.size() / 2), good + "x", ofOtherDriver, text()}) {
        setContent(bad);
        EXPECT_FALSE(compile(broken)) << bad.size();
        EXPECT_TRUE(compile(mixEffect)) << bad.size();
        EXPECT_EQ(content(), bad);
    }
    setContent(good);
    EXPECT_TRUE(compile(broken));
}

TEST_F(EffectCacheGL, neitherAFailureNorAMissingFolderLeavesAFile)
{
    EXPECT_FALSE(compile(broken));
    EXPECT_FALSE(compile(replaced(mixEffect, "* tint", "* taint")));
    EXPECT_TRUE(fs::is_empty(folder));
    fs::remove_all(folder);
    EXPECT_TRUE(compile(mixEffect));
    EXPECT_FALSE(fs::exists(file));
}

} // namespace
