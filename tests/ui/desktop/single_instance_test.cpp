#include "ui/desktop/single_instance.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>

#include <QDBusConnectionInterface>
#include <QSignalSpy>
#include <QTest>

#include "ui/desktop/application_id.h"
#include "ui/support/private_bus.h"

namespace boxlift::test {
namespace {

class SingleInstanceTest : public testing::Test {
protected:
    void SetUp() override {
        if (!bus.runs())
            GTEST_SKIP() << "no dbus-daemon";
    }

    /// What a later start answers, which waits for the first.
    bool startAgain(const std::vector<std::filesystem::path>& files) {
        auto later = std::async(std::launch::async, [this, files] {
            SingleInstance second(bus.clients());
            return second.handOver(files);
        });
        EXPECT_TRUE(QTest::qWaitFor(
            [&] { return later.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
        return later.get();
    }

    PrivateBus bus;
};

TEST_F(SingleInstanceTest, IsTheFirstWhoComes) {
    SingleInstance first(bus.services());
    EXPECT_FALSE(first.handOver({"/videos/a.mov"}));
    EXPECT_TRUE(bus.clients().interface()->isServiceRegistered(applicationId));
}

TEST_F(SingleInstanceTest, TakesTheFilesOfALaterStart) {
    SingleInstance first(bus.services());
    ASSERT_FALSE(first.handOver({}));
    const QSignalSpy opened(&first, &SingleInstance::opened);
    const QSignalSpy activated(&first, &SingleInstance::activated);
    EXPECT_TRUE(startAgain({"/videos/a b.mov", "/videos/raw\xff#é.mov"}));
    ASSERT_EQ(opened.count(), 1);
    const auto urls = opened.front().front().value<QList<QUrl>>();
    ASSERT_EQ(urls.size(), 2);
    EXPECT_EQ(urls[0].toEncoded().toStdString(), "file:///videos/a%20b.mov");
    EXPECT_EQ(urls[1].toEncoded().toStdString(), "file:///videos/raw%FF%23%C3%A9.mov");
    EXPECT_EQ(activated.count(), 1);
}

TEST_F(SingleInstanceTest, ComesToTheFrontForAStartWithoutFiles) {
    SingleInstance first(bus.services());
    ASSERT_FALSE(first.handOver({}));
    const QSignalSpy opened(&first, &SingleInstance::opened);
    const QSignalSpy activated(&first, &SingleInstance::activated);
    EXPECT_TRUE(startAgain({}));
    EXPECT_EQ(opened.count(), 0);
    EXPECT_EQ(activated.count(), 1);
}

TEST_F(SingleInstanceTest, LeavesItsPlaceAtItsEnd) {
    {
        SingleInstance first(bus.services());
        ASSERT_FALSE(first.handOver({}));
    }
    SingleInstance second(bus.services());
    EXPECT_FALSE(second.handOver({"/videos/a.mov"}));
}

TEST_F(SingleInstanceTest, OpensAWindowOfItsOwnWhenTheOtherDoesNotAnswer) {
    ASSERT_TRUE(bus.services().registerService(applicationId));
    EXPECT_FALSE(startAgain({"/videos/a.mov"}));
}

TEST(SingleInstance, IsAloneWithoutABus) {
    SingleInstance first{QDBusConnection(QString())};
    EXPECT_FALSE(first.handOver({"/videos/a.mov"}));
}

} // namespace
} // namespace boxlift::test
