// Data folders in every state that a start may find them in, and the ways in which a byte of a file goes bad
// on a memory card.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tests/faults/data_folder.h"

const std::wstring kDamagedGroup = L"fj.a";

// What the group's log holds, and the start finds behind it. A deletion keeps the first and the last.
struct Scene {
    const char* name;
    GroupIs state;
    std::vector<std::wstring> damaged;  // the files that go bad, one at a time
};

std::vector<Scene> Scenes();

inline void PrintTo(const Scene& scene, std::ostream* out) {
    *out << scene.name;
}

// The whole data folder, with another group, lists and keywords beside the damaged group. An empty name is
// the folder itself.
Files SceneFiles(const Scene& scene);

// The articles that must be there after a start.
std::vector<Article> SceneArticles(const Scene& scene);

enum class Harm { kFlipped, kZero, kHigh, kLineFeed, kCut, kDoubled, kLost };

// One byte of one file of a scene.
struct DamageRow {
    const Scene* scene = nullptr;
    std::wstring file;
    Harm harm = Harm::kFlipped;
    std::size_t at = 0;
};

std::string Describe(const DamageRow& row);

// Each of a scene's files lost, and every byte of it in every way.
std::vector<DamageRow> RowsOf(const Scene& scene);

std::string Damaged(std::string bytes, Harm harm, std::size_t at);

bool IsLog(const std::wstring& name);
bool IsIndex(const std::wstring& name);

// Whether the damage may keep a reader from the scene's article `number`; if not, he must find it unchanged.
bool Touches(const DamageRow& row, std::size_t number);
