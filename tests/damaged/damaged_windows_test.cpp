// A sample of the same damage below the real windows: whatever stands in the files, the frame opens, every
// pane can be walked through, and what is told is an error with its number.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>

#include "resources/resource.h"
#include "store/data_folder.h"
#include "tests/damaged/scenes.h"
#include "tests/damaged/watch.h"
#include "tests/shell/walk.h"

namespace {

using testing::Contains;

class DamagedWindowsTest : public WalkTest, public testing::WithParamInterface<Scene> {
  protected:
    void SetUp() override {
        WalkTest::SetUp();
        ASSERT_TRUE(MakeDraftFolder(folder.Path().c_str()));
        for (const auto& [name, bytes] : OtherFiles())
            folder.Write(name, bytes);
    }

    void Run(const DamageRow& row) {
        SCOPED_TRACE(Describe(row));
        watch.Begin(Describe(row));
        PlaceDamage(folder, row);
        boxes.clear();
        answer = IDYES;
        Open();
        ASSERT_TRUE(frame);
        // A list that lost the group's name cannot lead to it.
        const bool listed = boxes.empty() && row.file != L"group.dat";
        const std::vector<std::string> texts = ReadAll();
        for (std::size_t i = 0; listed && i < row.scene->articles.size(); ++i) {
            if (!Touches(row, i))
                EXPECT_THAT(texts, Contains(row.scene->articles[i].text)) << "article " << i;
        }
        Command(IDC_SUBSCRIBE);
        Command(IDC_DELETE_READ);
        Close();
        ExpectOthersAlone(folder, row);
        ExpectNumbers();
    }

    // Opens the damaged group and every article in it.
    std::vector<std::string> ReadAll() {
        std::vector<std::string> texts;
        OpenGroup(0);
        if (frame->currentView != ViewKind::kSubject) return texts;
        if (!frame->viewReadArticles) Command(IDC_VIEW_READ);
        for (uint32_t i = 0, rows = std::min(Subjects().list.visibleCount, 5u); i < rows; ++i) {
            Key(VK_RETURN);
            if (frame->currentView == ViewKind::kArticle) {
                texts.push_back(::Narrow(Reader().text.get()));
                Command(IDC_BACK_TO_SUBJECTS);
            }
            Key(VK_DOWN);
        }
        Command(IDC_KEYWORDS);
        Command(IDC_BACK_TO_GROUPS);
        return texts;
    }

    // What is told is a known error's number, or a text that needs none.
    void ExpectNumbers() {
        for (const Box& box : boxes) {
            const std::size_t open = box.text.find(L'(');
            if (open == std::wstring::npos) continue;
            EXPECT_THAT(std::wcstol(box.text.c_str() + open + 1, nullptr, 10),
                        testing::AnyOf(2, 8, 13, 87, 234))
                << testing::PrintToString(box);
        }
    }

    Watch watch;
};

TEST_P(DamagedWindowsTest, SomeBytes) {
    const std::size_t done = ForEachDamage(GetParam(), 4, [&](const DamageRow& row) {
        Run(row);
        return FailureCount() < 12;
    });
    std::printf("%u rows\n", static_cast<unsigned>(done));
}

INSTANTIATE_TEST_SUITE_P(Scenes, DamagedWindowsTest, testing::ValuesIn(WindowScenes()),
                         [](const auto& scene) { return std::string(scene.param.name); });

}  // namespace
