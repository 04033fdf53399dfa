#include "queue/mailbox.h"

#include <memory>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>

namespace boxlift {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

bool isReadable(const Mailbox& mailbox) {
    pollfd descriptor{.fd = mailbox.descriptor(), .events = POLLIN, .revents = 0};
    return ::poll(&descriptor, 1, 0) == 1;
}

class MailboxTest : public testing::Test {
protected:
    Mailbox::Work noting(int number) {
        return [this, number] { m_done.push_back(number); };
    }

    static void runAll(const std::deque<Mailbox::Work>& works) {
        for (const Mailbox::Work& work : works)
            work();
    }

    Mailbox m_mailbox;
    std::vector<int> m_done;
};

TEST_F(MailboxTest, HoldsNothingAtFirst) {
    EXPECT_FALSE(isReadable(m_mailbox));
    EXPECT_THAT(m_mailbox.takeAll(), IsEmpty());
}

TEST_F(MailboxTest, GivesWorkInTheOrderInWhichItCame) {
    for (const int number : {1, 2, 3})
        m_mailbox.post(noting(number));
    EXPECT_THAT(m_done, IsEmpty());
    runAll(m_mailbox.takeAll());

    EXPECT_THAT(m_done, ElementsAre(1, 2, 3));
}

TEST_F(MailboxTest, IsReadableWhileSomethingWaits) {
    m_mailbox.post(noting(1));
    EXPECT_TRUE(isReadable(m_mailbox));
    m_mailbox.post(noting(2));
    m_mailbox.takeAll();
    EXPECT_FALSE(isReadable(m_mailbox));

    m_mailbox.post(noting(3));
    EXPECT_TRUE(isReadable(m_mailbox));
}

TEST_F(MailboxTest, GivesWhatWasPutBackFirst) {
    m_mailbox.post(noting(1));
    m_mailbox.post(noting(2));
    auto rest = m_mailbox.takeAll();
    m_mailbox.post(noting(3));
    m_mailbox.putBack(std::move(rest));

    EXPECT_TRUE(isReadable(m_mailbox));
    runAll(m_mailbox.takeAll());
    EXPECT_THAT(m_done, ElementsAre(1, 2, 3));
}

TEST_F(MailboxTest, IsReadableWhenSomethingIsPutBackIntoAnEmptyOne) {
    m_mailbox.post(noting(1));
    m_mailbox.putBack(m_mailbox.takeAll());

    EXPECT_TRUE(isReadable(m_mailbox));
}

TEST_F(MailboxTest, DropsWhatWaitsAndWhatComesLaterOnceItIsClosed) {
    const auto token = std::make_shared<int>();
    m_mailbox.post([token] {});
    m_mailbox.close();
    m_mailbox.post([token] {});

    EXPECT_EQ(token.use_count(), 1);
    EXPECT_THAT(m_mailbox.takeAll(), IsEmpty());
}

TEST_F(MailboxTest, LosesNothingThatManyThreadsPost) {
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < 4; ++thread) {
            threads.emplace_back([this, thread] {
                for (int i = 0; i < 1000; ++i)
                    m_mailbox.post(noting(thread * 1000 + i));
            });
        }
    }
    runAll(m_mailbox.takeAll());

    EXPECT_THAT(m_done, SizeIs(4000));
    std::vector<int> last(4, -1);
    for (const int number : m_done) {
        EXPECT_GT(number % 1000, last.at(static_cast<std::size_t>(number / 1000)));
        last.at(static_cast<std::size_t>(number / 1000)) = number % 1000;
    }
}

} // namespace
} // namespace boxlift
