#include "engines/EngineStage.h"
#include "support/reference/Transitions.h"

#include <QEasingCurve>
#include <QPropertyAnimation>

using namespace tavlo;
using namespace tavlo::test;

namespace {

constexpr int pgm = static_cast<int>(TavloPresentChannelIDPGM);
constexpr int pvm = static_cast<int>(TavloPresentChannelIDPVM);

class Take : public EngineStage
{
public:
    void SetUp() override
    {
        create(3, 3);
        send(TavloEventSelectChannel, pgm, 0);
        step();
        heard = reports.size();
    }

    void take(int channel, qint32 effect = 22, float seconds = 1.0F, int easing = QEasingCurve::Linear)
    {
        const tagTavloPresentTransitionEffectParam param{effect, seconds, easing};
        send(TavloEventTransition, {}, channel, QVariant::fromValue(param));
    }

    TavloPresentChannelPGM& program() { return *inside->channels().program(); }
    QPropertyAnimation& animation() { return *program().findChild<QPropertyAnimation*>(); }

    /// What the sink heard of switching, as "position 0.5" and "select 4097 1".
    QStringList told() const
    {
        QStringList lines;
        for (auto report = reports.begin() + static_cast<std::ptrdiff_t>(heard); report != reports.end(); ++report) {
            if (report->event == TavloEventSetTransitionPos)
                lines += QStringLiteral("position %1").arg(report->a2.toDouble());
            else if (report->event == TavloEventSelectChannel)
                lines += QStringLiteral("select %1 %2").arg(report->a1.toUInt()).arg(report->a2.toUInt());
            else if (report->event == TavloEventTransition)
                lines += QStringLiteral("take");
        }
        return lines;
    }

    std::size_t heard = 0; ///< reports that `told` leaves out
};

TEST_F(Take, ACutSwapsWithinItsEvent)
{
    // By its effect, and by its duration.
    for (const auto& [effect, seconds] : {std::pair{0, 5.0F}, std::pair{22, 0.0F}}) {
        const int before = program().programChannel();
        heard = reports.size();
        take(1 - before, effect, seconds);
        EXPECT_EQ(program().programChannel(), 1 - before);
        EXPECT_EQ(animation().state(), QAbstractAnimation::Stopped);
        send(TavloEventPlacementChanged); // whatever is posted is handled by now
        EXPECT_EQ(told(), QStringList({"position 1", QStringLiteral("select 4097 %1").arg(1 - before), "take",
                                       QStringLiteral("select 4096 %1").arg(before)}));
        EXPECT_EQ(inside->channels().preview()->shownChannel(), before);
        step();
        EXPECT_EQ(shot(pgm).at(10, 10).r, TestSource::redOf(1 - before));
        EXPECT_EQ(shot(pvm).at(10, 10).r, TestSource::redOf(before));
    }
}

TEST_F(Take, EveryEasingEndsInOneSwap)
{
    for (int easing = QEasingCurve::Linear; easing < QEasingCurve::BezierSpline; ++easing) {
        const int before = program().programChannel();
        heard = reports.size();
        take(1 - before, 22, 1.0F, easing);
        for (int ms = 0; ms <= 1000 && animation().state() == QAbstractAnimation::Running; ms += 40)
            animation().setCurrentTime(ms);
        EXPECT_EQ(program().switchProcessPos(), 0.0) << easing;
        EXPECT_EQ(program().programChannel(), 1 - before) << easing;
        EXPECT_EQ(told().filter(QStringLiteral("select 4097")).size(), 1) << easing;
        EXPECT_NE(animation().state(), QAbstractAnimation::Running) << easing;
        send(TavloEventPlacementChanged);
    }
}

TEST_F(Take, ATakeDuringATakeGoesOnFromWhereItStands)
{
    take(1, 22, 1.0F);
    animation().setCurrentTime(400);
    EXPECT_NEAR(program().switchProcessPos(), 0.4, 1e-6);
    take(2, 25, 2.0F);
    EXPECT_NEAR(program().switchProcessPos(), 0.4, 1e-6);
    animation().setCurrentTime(1000);
    EXPECT_NEAR(program().switchProcessPos(), 0.7, 1e-6);
    animation().setCurrentTime(2000);
    EXPECT_EQ(program().programChannel(), 2);
}

TEST_F(Take, TheFaderIsTheOperatorsHand)
{
    take(1, 22, 1.0F);
    animation().setCurrentTime(200);
    heard = reports.size();
    send(TavloEventSetTransitionPos, {}, 0.5F);
    EXPECT_EQ(animation().state(), QAbstractAnimation::Stopped);
    EXPECT_EQ(told(), QStringList({"position 0.5"})) << "the event's own report";
    send(TavloEventSetTransitionPos, {}, 0.0F);
    EXPECT_EQ(program().programChannel(), 0);
    heard = reports.size();
    send(TavloEventSetTransitionPos, {}, 1.0F);
    EXPECT_EQ(program().programChannel(), 1);
    send(TavloEventPlacementChanged);
    EXPECT_EQ(told(), QStringList({"position 1", "select 4097 1", "position 1", "select 4096 0"}));
}

TEST_F(Take, AMissingChannelIsNoPicture)
{
    take(4711, 22, 1.0F);
    animation().setCurrentTime(500);
    step();
    EXPECT_NEAR(shot(pgm).at(10, 10).b, 125, 4) << "half of the outgoing one over nothing";
    animation().setCurrentTime(1000);
    step();
    EXPECT_EQ(program().programChannel(), 4711);
}

TEST_F(Take, TheProgramShowsTheTransition)
{
    take(2, 22, 1.0F); // a plain fade
    for (const int ms : {250, 500, 750}) {
        animation().setCurrentTime(ms);
        step();
        const double share = ms / 1000.0;
        const Pixel pixel = shot(pgm).at(10, 10);
        EXPECT_NEAR(pixel.r, TestSource::redOf(0) * (1 - share) + TestSource::redOf(2) * share, 2);
        EXPECT_EQ(pixel.b, 250);
        EXPECT_EQ(pixel.a, 255);
    }
}

// A wipe, a diagonal one, a slide, a stretch: the program is what the reference makes of the two channels' pictures.
TEST_F(Take, OtherKindsShowWhatTheReferenceSays)
{
    const auto toReference = [](const Shot& shot) {
        return reference::Picture{shot.width(), frameHeight, shot.bytes()};
    };
    for (const int kind : {2, 8, 30, 47}) {
        take(2, kind, 1.0F);
        for (const int ms : {120, 500, 870}) {
            animation().setCurrentTime(ms);
            step();
            const reference::Picture outgoing = toReference(shot(0)), incoming = toReference(shot(2));
            const reference::Picture program = toReference(shot(pgm));
            int wrong = 0;
            for (int y = 0; y < frameHeight; ++y) {
                for (int x = 0; x < frameWidth; ++x) {
                    const reference::Vector uv{(x + 0.5) / frameWidth, (y + 0.5) / frameHeight};
                    const auto wanted = reference::transition(kind, ms / 1000.0, outgoing, incoming, {}, uv);
                    const auto got = program.at(x, y);
                    const auto apart = [](double a, double b) { return std::abs(a - b) > 4 / 255.0; };
                    wrong += apart(got[0], wanted[0]) || apart(got[1], wanted[1]) || apart(got[2], wanted[2]);
                }
            }
            EXPECT_LE(wrong, frameHeight / 2) << kind << " at " << ms << ": only an edge may fall on either side";
        }
        send(TavloEventSetTransitionPos, {}, 0.0F);
    }
}

TEST_F(Take, ChanceChoosesTransitionsThatAreThere)
{
    EXPECT_EQ(TavloPresentChannelPGM::effectForDraw(0), 0U) << "a cut";
    EXPECT_EQ(TavloPresentChannelPGM::effectForDraw(72), 22U);
    for (quint32 number = 1; number < 80; ++number) {
        const quint32 effect = TavloPresentChannelPGM::effectForDraw(number);
        EXPECT_NE(TavloPresentUtil::getEffectCatalog(effect), TavloPresentEffectKindCatalogNone) << number;
    }
    take(1, TavloPresentChannelPGM::randomEffect, 1.0F);
    animation().setCurrentTime(1000);
    EXPECT_EQ(program().programChannel(), 1);
}

TEST_F(Take, AFilterAndABlendedFileLieOverTheWhole)
{
    step();
    const Pixel plain = shot(pgm).at(10, 100);
    send(TavloEventSetChannelFilter, pgm, 19); // black and white
    step();
    const Pixel grey = shot(pgm).at(10, 100);
    EXPECT_NEAR(grey.r, grey.g, 2);
    EXPECT_NEAR(grey.g, grey.b, 2);
    send(TavloEventSetChannelFilter, pgm, 0);
    send(TavloEventSetBlendLayer, pgm, QStringLiteral("clip"));
    EXPECT_EQ(reportsOf(TavloEventSourceOpened).back().a1.toInt(), 65535);
    step(2);
    const Pixel brighter = shot(pgm).at(EngineStage::frameWidth - 10, 100);
    EXPECT_GT(brighter.g, plain.g);
    send(TavloEventSetBlendLayer, pgm, QString());
    EXPECT_EQ(reportsOf(TavloEventSourceClosed).size(), 1U);
    step();
    EXPECT_EQ(shot(pgm).at(10, 100), plain);
}

} // namespace
