#include "scene/Action.h"
#include "scene/DrawNode.h"
#include "scene/EventDispatcher.h"
#include "scene/Layer.h"
#include "scene/RenderTexture.h"
#include "scene/Renderer.h"
#include "scene/SceneTest.h"
#include "scene/Sprite.h"
#include "scene/TavloCLabel.h"
#include "support/LogCapture.h"

#include <QDir>
#include <QDirIterator>
#include <QFontDatabase>
#include <QTemporaryDir>

using namespace tavlo;
using namespace tavlo::scene;
using namespace tavlo::test;

namespace {

/// All that an engine makes of one, begun and run for a frame.
struct Engine
{
    RefPtr<Director> director = Director::create();
    RefPtr<GLViewImpl> view = GLViewImpl::createWithRect({}, {0, 0, 40, 30}, -1);
    RefPtr<Scene> scene;

    explicit Engine(bool draws = true)
    {
        director->init();
        director->setOpenGLView(view);
        director->startAnimation();
        scene = Scene::createWithSize(*director, view->frameSize());
        director->runWithScene(scene);
        const RefPtr<RenderTexture> target = RenderTexture::create(*director, 16, 12);
        target->setAutoDraw(true);
        target->addChild(LayerColor::create(*director, {255, 0, 0, 255}));
        target->addChild(TavloCLabel::createWithTTF(*director, {}, "a"));
        scene->addChild(target);
        const RefPtr<DrawNode> marks = DrawNode::create(*director);
        marks->drawSolidRect({0, 0}, {4, 4}, {0, 1, 0, 1});
        marks->runAction(MoveTo::create(100, {50, 50}));
        scene->addChild(marks);
        director->eventDispatcher().addEventListenerWithSceneGraphPriority(EventListenerMouse::create(), marks.get());
        if (draws)
            frame(0);
    }

    void frame(std::uint64_t clock)
    {
        view->beginFrame(0, 0, clock);
        director->mainLoop();
        view->endFrame();
    }

    void end()
    {
        scene.reset();
        director->end();
        director->autoReleasePool().clear();
        director->mainLoop();
    }
};

TEST(SceneLife, aDirectorComesAndGoesManyTimes)
{
    for (int i = 0; i < 200; ++i) {
        Engine engine(i % 10 == 0); // the driver compiles anew for each device, which is most of the time
        engine.end();
        EXPECT_EQ(engine.director->referenceCount(), 1U); // no node holds it any more
        EXPECT_EQ(engine.view->referenceCount(), 1U);
    }
}

// A font of the machine that is quickly read; empty when there is none.
QString fontFile()
{
    QDirIterator files(QStringLiteral("/usr/share/fonts"), {QStringLiteral("*.ttf")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext())
        if (QFileInfo(files.next()).size() < 2'000'000)
            return files.filePath();
    return {};
}

TEST(SceneLife, manyDirectorsReadAFontFileOnce)
{
    const QString file = fontFile();
    if (file.isEmpty())
        GTEST_SKIP() << "no font file";
    const auto filesOfQt = [&file] { // the number of the next one
        const int id = QFontDatabase::addApplicationFont(file);
        QFontDatabase::removeApplicationFont(id);
        return id;
    };
    const int before = filesOfQt();
    for (int i = 0; i < 200; ++i) {
        const RefPtr<Director> director = Director::create();
        const auto label = TavloCLabel::createWithTTF(*director, {file.toStdString(), 20}, "abc");
        EXPECT_GT(label->contentSize().width, 5);
    }
    EXPECT_LE(filesOfQt(), before + 1);
}

TEST(SceneLife, severalLiveSideBySide)
{
    Engine first, second;
    second.end();
    first.frame(40000);
    EXPECT_TRUE(first.director->runningScene());
    EXPECT_FALSE(second.director->runningScene());
    second.director->mainLoop(); // over, and without a view
    first.end();
}

TEST(SceneLife, aNodeMayOutliveTheEnd)
{
    RefPtr<Node> kept;
    {
        Engine engine;
        kept = engine.scene->children().front();
        kept->runAction(MoveTo::create(1, {}));
        engine.end();
    }
    EXPECT_EQ(kept->runningActionCount(), 0U);
    kept->setPosition(1, 2);
    kept->removeAllChildren();
    const LogCapture log;
    EXPECT_FALSE(RenderTexture::create(kept->director(), 4, 4));
    EXPECT_EQ(log.count("a render texture needs a view and a size"), 1);
}

TEST(SceneLife, theLastHolderOfADirectorMayGoInItsOwnFrame)
{
    RefPtr<Director> director = Director::create();
    Director* const lent = director.get();
    lent->autoReleasePool().add(Node::create(*director));
    director.reset(); // now the node alone holds it
    lent->mainLoop();
}

TEST(SceneLife, compiledShadersAreKeptAndTakenBack)
{
    const QTemporaryDir folder;
    const auto files = [&folder] {
        const QDir cache(folder.filePath(QStringLiteral("shader")));
        return cache.entryList(QDir::Files, QDir::Name);
    };
    Engine first(false);
    first.director->setDataCachePath(folder.path().toStdString());
    EXPECT_TRUE(first.director->renderer().prepare());
    const auto kept = files();
    ASSERT_FALSE(kept.isEmpty());
    first.frame(0);
    first.end();
    EXPECT_FALSE(first.director->renderer().prepare()); // without a view
    QFile broken(folder.filePath(QStringLiteral("shader/") + kept.first()));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly | QIODevice::Truncate));
    broken.write("no program");
    broken.close();
    Engine second(false);
    second.director->setDataCachePath(folder.path().toStdString());
    second.frame(0);
    EXPECT_GT(second.director->renderer().statistics().drawCalls, 0U);
    second.end();
    EXPECT_EQ(files(), kept);
    EXPECT_GT(QFileInfo(broken.fileName()).size(), 100); // compiled and kept again
}

TEST(SceneLife, anotherSceneTakesTheStage)
{
    Engine engine;
    const RefPtr<Node> old = engine.scene->children().back();
    engine.director->runWithScene(Scene::createWithSize(*engine.director, {4, 4}));
    EXPECT_EQ(old->runningActionCount(), 0U);
    EXPECT_EQ(engine.director->eventDispatcher().listenerCount(), 0U);
    engine.frame(40000);
    engine.end();
}

TEST(SceneLife, treesTakeAndGiveNodes)
{
    Engine engine;
    const RefPtr<Node> parent = Node::create(*engine.director), child = Node::create(*engine.director);
    child->setName("child");
    parent->addChild(child);
    const LogCapture log;
    engine.scene->addChild(child); // has a parent
    child->addChild(child);
    child->addChild(parent); // which it hangs on
    EXPECT_EQ(log.count("addChild of a node that has a parent, or of none"), 3);
    EXPECT_EQ(child->referenceCount(), 2U);
    EXPECT_EQ(parent->childByName("child"), child.get());
    engine.scene->removeChild(child.get()); // not its parent
    EXPECT_EQ(child->parent(), parent.get());
    parent->addChild(Node::create(*engine.director), -3);
    std::string seen;
    parent->addChild(engine.scene->children().front()); // refused as well
    EXPECT_TRUE(parent->enumerateDescendants([&seen](Node& node) {
        seen += node.name() + ".";
        node.removeFromParent();
        return true;
    }));
    EXPECT_EQ(seen, ".child.");
    EXPECT_TRUE(parent->children().empty());
    EXPECT_EQ(child->referenceCount(), 1U);
    engine.end();
}

TEST(SceneLife, aViewNeedsADeviceAndASize)
{
    const LogCapture log;
    EXPECT_FALSE(GLViewImpl::createWithRect({}, {0, 0, 0, 30}, -1));
    EXPECT_FALSE(GLViewImpl::createWithRect({}, {0, 0, 1 << 20, 30}, -1));
    EXPECT_FALSE(GLViewImpl::createWithRect({}, {0, 0, 40, 30}, 4711));
    EXPECT_EQ(log.count("a view of no size, or of one too large"), 2);
    const auto view = GLViewImpl::createWithRect({}, {0, 0, 40, 30}, -1, 0x7fffff01);
    ASSERT_TRUE(view);
    EXPECT_EQ(log.count("the view is off screen"), 1);
    EXPECT_FALSE(view->isBottomRowFirst());
}

} // namespace
