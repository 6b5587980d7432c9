// What other programs do to this one: start it once more, and send its frame messages.
#include <gmock/gmock.h>

#include "dialup/dialup.h"
#include "tests/shell/walk.h"
#include "tests/support/ui_thread.h"

namespace {

class ElsewhereTest : public WalkTest {
  protected:
    void ReportEnd(const DownloadJob* job) const {
        SendMessageW(frame->mainWindow, kRunFinishedMessage, 0, reinterpret_cast<LPARAM>(job));
    }
};

// Neither finds a frame while the other has not made its own.
TEST_F(ElsewhereTest, OfTwoStartsAtOnceOneStays) {
    constexpr int kTries = 5;
    for (int i = 0; i < kTries; ++i) {
        SCOPED_TRACE(i);
        UnregisterClasses();
        std::atomic<int> waiting{0};
        const auto start = [&waiting] {
            ++waiting;
            while (waiting < 2)
                std::this_thread::yield();
            return RunPelnor(GetModuleHandleW(nullptr), SW_SHOW);
        };
        const UiThread first(start), second(start);
        ASSERT_TRUE(Await([&] { return first.Ended() || second.Ended(); })) << "both stay";
        const UiThread& stays = first.Ended() ? second : first;
        SendMessageW(stays.Window(L"Pelnor"), WM_CLOSE, 0, 0);
        EXPECT_EQ(first.Result(), 0);
        EXPECT_EQ(second.Result(), 0);
    }
}

TEST_F(ElsewhereTest, TheEndOfARunCountsOnceAndForTheFramesOwnRunOnly) {
    Open();
    std::unique_ptr<DownloadJob> job =
        MakeDownloadJob(frame->settings, frame->groupView->list, frame->mainWindow, nullptr);
    ASSERT_TRUE(job);
    ReportEnd(nullptr);
    ReportEnd(job.get());
    EXPECT_THAT(boxes, testing::IsEmpty());
    frame->job = job.release();
    onBox = [&](HWND) {
        ReportEnd(frame->job);
        SendMessageW(frame->mainWindow, kStartRunMessage, 0, 0);
    };
    ReportEnd(frame->job);
    EXPECT_THAT(boxes, testing::ElementsAre(Box{L"Disconnect", L"ダウンロードが終了しました。"}));
    EXPECT_EQ(frame->job, nullptr);
}

}  // namespace
