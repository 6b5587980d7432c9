// Small data folders in every state that a start may find them in, put together here and not by the program,
// and the ways in which a byte of a file goes bad on a memory card.
#pragma once

#include <cstdlib>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "tests/store/group_files.h"

using Files = std::map<std::wstring, std::string>;  // contents by name

const std::wstring kDamagedGroup = L"fj.test";

inline std::string Ascii(const std::wstring& name) {
    return {name.begin(), name.end()};
}

// A number as it stands in an index.
inline uint32_t WordIn(const std::string& bytes, std::size_t at) {
    uint32_t word = 0;
    for (std::size_t i = 4; i > 0; --i)
        word = word << 8 | static_cast<unsigned char>(bytes[at + i - 1]);
    return word;
}

// Three articles; those that a deletion keeps are the first and the last.
struct SceneArticle {
    uint32_t flags;  // 1 read, 2 low, 4 high
    std::string text;
    RecordBytes record;
};

inline std::vector<SceneArticle> SceneArticles() {
    std::vector<SceneArticle> articles;
    const char* bodies[] = {"one\r\n\r\n", "> two\r\n=\r\n", "\x82\xA0\r\n"};
    const uint32_t flags[] = {0, 1 | 2, 4};
    uint32_t offset = 0;
    for (uint32_t i = 0; i < 3; ++i) {
        const std::string subject = "Subject: " + std::string(i == 2 ? "high" : "low") + std::to_string(i);
        const std::string text = subject + "\r\nX-Local-Seq: " + std::to_string(i + 1) + "\r\n\r\n" +
                                 bodies[i] + "================\r\n";
        const auto length = static_cast<uint32_t>(text.size());
        RecordBytes record{flags[i], i + 1, offset, length};
        record.subject = subject.substr(9);
        record.textOffset = offset + 9;
        record.textLength = static_cast<uint32_t>(record.subject.size());
        articles.push_back({flags[i], text, record});
        offset += length;
    }
    return articles;
}

// How an index of each version is laid out: sizes of header and record.
struct SceneLayout {
    std::size_t header;
    std::size_t record;
};
constexpr SceneLayout kSceneLayouts[] = {{0, 0}, {0, 0}, {88, 64}, {92, 64}, {92, 84}, {100, 92}};

inline std::string SceneIndex(uint32_t version, const std::vector<SceneArticle>& articles) {
    if (version == 1) return "3\r\ndone\r\n9\r\n0\r\n";
    HeaderBytes header;
    header.version = version;
    header.lastFetched = 3;
    header.serverLast = 9;
    header.recordCount = static_cast<uint32_t>(articles.size());
    header.status = "done";
    std::string records;
    for (const SceneArticle& article : articles) {
        records += Bytes(article.record).substr(0, kSceneLayouts[version].record);
        header.unread += !(article.flags & 1);
        header.high += article.flags == 4;
        header.low += article.flags == 3;
    }
    return Bytes(header) + records;
}

inline std::string SceneLog(const std::vector<SceneArticle>& articles) {
    std::string log;
    for (const SceneArticle& article : articles)
        log += article.text;
    return log;
}

// What is left after the read article was deleted.
inline std::vector<SceneArticle> Kept() {
    std::vector<SceneArticle> kept;
    uint32_t offset = 0;
    for (SceneArticle article : SceneArticles()) {
        if (article.flags & 1) continue;
        article.record.offset = offset;
        offset += article.record.length;
        kept.push_back(article);
    }
    return kept;
}

struct Scene {
    const char* name;
    std::vector<SceneArticle> articles;  // what must be there after the start
    Files files;                         // of the group
    std::vector<std::wstring> damaged;   // the files that go bad, one at a time
    uint32_t version = 0;    // of the index that the articles are found by; 0: they are found in the log
    bool onlyIndex = false;  // neither a conversion nor a deletion was cut off
};

inline void PrintTo(const Scene& scene, std::ostream* out) {
    *out << scene.name;
}

// What else is in the data folder. Nothing of it changes when read articles are deleted and the subscriptions
// are written again.
inline Files OtherFiles() {
    const std::vector<SceneArticle> articles = Kept();
    return {{L"group.dat", "fj.test\r\nfj.other\r\n"},
            {L"active.dat", "fj.other\r\nfj.test\r\n"},
            {L"category.dat", "fj\r\n"},
            {L"draft\\note.txt", "a draft"},
            {L"fj.other.idx", SceneIndex(5, articles)},
            {L"fj.other.log", SceneLog(articles)},
            {L"fj.other.flt", "+ high\r\n"}};
}

inline std::vector<Scene> Scenes() {
    const std::wstring idx = kDamagedGroup + L".idx", log = kDamagedGroup + L".log",
                       flt = kDamagedGroup + L".flt";
    const std::wstring newIndex = kDamagedGroup + L".id~", newLog = kDamagedGroup + L".lo~",
                       upgraded = idx + L"~";
    const std::vector<SceneArticle> all = SceneArticles(), kept = Kept();
    const std::string allLog = SceneLog(all), keptLog = SceneLog(kept), keywords = "+ high\r\n- low\r\n";
    const std::string index = SceneIndex(5, all), keptIndex = SceneIndex(5, kept);
    std::vector<Scene> scenes = {
        {"Current",
         all,
         {{idx, index}, {log, allLog}, {flt, keywords}},
         {idx, log, flt, L"group.dat"},
         5,
         true},
        {"LostIndex", all, {{log, allLog}, {flt, keywords}}, {log, flt}},
        {"UpgradeCutOff", all, {{upgraded, index}, {log, allLog}}, {upgraded, log}, 5},
        {"DeletionWithoutLog",
         kept,
         {{idx, index}, {newIndex, keptIndex}, {newLog, keptLog}},
         {idx, newIndex, newLog},
         5},
        {"DeletionWithNewLog",
         kept,
         {{idx, index}, {log, keptLog}, {newIndex, keptIndex}},
         {idx, newIndex, log},
         5},
        {"DeletionWithoutIndex", kept, {{log, keptLog}, {newIndex, keptIndex}}, {newIndex, log}, 5}};
    const char* names[] = {"", "Version1", "Version2", "Version3", "Version4"};
    for (uint32_t version = 1; version < 5; ++version) {
        const Files files = {{idx, SceneIndex(version, all)}, {log, allLog}};
        scenes.push_back({names[version], all, files, {idx, log}, version == 1 ? 0 : version});
    }
    return scenes;
}

// Those, and the lists that only a dialog reads.
inline std::vector<Scene> WindowScenes() {
    std::vector<Scene> scenes = Scenes();
    scenes.push_back(scenes.front());
    scenes.back().name = "Lists";
    scenes.back().damaged = {L"active.dat", L"category.dat", L"group.dat"};
    return scenes;
}

// Damage.

enum class Harm { kFlipped, kZero, kHigh, kLineFeed, kCut, kDoubled };
constexpr Harm kHarms[] = {Harm::kFlipped,  Harm::kZero, Harm::kHigh,
                           Harm::kLineFeed, Harm::kCut,  Harm::kDoubled};

inline const char* NameOf(Harm harm) {
    const char* names[] = {"flipped", "zero", "0x80", "a line feed", "cut off from here", "doubled"};
    return names[static_cast<int>(harm)];
}

// One byte of one file of a scene.
struct DamageRow {
    const Scene* scene = nullptr;
    std::wstring file;
    Harm harm = Harm::kFlipped;
    std::size_t at = 0;
};

inline std::string Describe(const DamageRow& row) {
    return std::string(row.scene->name) + ": " + Ascii(row.file) + ", byte " + std::to_string(row.at) + " " +
           NameOf(row.harm);
}

inline bool IsLog(const std::wstring& name) {
    return name.find(L".lo") != std::wstring::npos;
}
inline bool IsIndex(const std::wstring& name) {
    return name.find(L".id") != std::wstring::npos;
}

inline bool TouchesLog(const DamageRow& row, std::size_t start, std::size_t end, std::size_t previous) {
    const bool scanned = row.scene->version == 0;
    if (row.harm == Harm::kCut || (row.harm == Harm::kDoubled && !scanned)) return end > row.at;
    // In a log that is scanned, a separator that is none any more costs the article behind it too.
    return (scanned ? previous : start) <= row.at && row.at < end;
}

inline bool TouchesIndex(const DamageRow& row, std::size_t number) {
    constexpr std::size_t kVersionEnd = 4, kCount = 16, kPlace = 8, kPlaceEnd = 16;
    const SceneLayout layout = kSceneLayouts[row.scene->version];
    const std::size_t record = layout.header + layout.record * number;
    // A header that counts more records than there are is told as an error.
    if (row.harm == Harm::kCut) return true;
    // Another version, if it is one at all, is made anew from the log.
    if (row.harm == Harm::kDoubled) return row.at > 0 && record + layout.record > row.at;
    if (row.at < kVersionEnd) return false;
    const bool count = kCount <= row.at && row.at < kCount + 4;
    return count || (record + kPlace <= row.at && row.at < record + kPlaceEnd);
}

// Whether the damage may keep a reader from the scene's article `number`; if not, he must find it unchanged.
inline bool Touches(const DamageRow& row, std::size_t number) {
    const std::vector<SceneArticle>& articles = row.scene->articles;
    const std::size_t start = articles[number].record.offset;
    const std::size_t previous = number ? articles[number - 1].record.offset : start;
    if (IsLog(row.file)) return TouchesLog(row, start, start + articles[number].record.length, previous);
    // The new log stands beside the old index, and what would say so cannot be believed.
    const std::wstring idx = kDamagedGroup + L".idx";
    const bool mismatch = row.scene->files.count(idx) && row.file == kDamagedGroup + L".id~";
    return mismatch || (IsIndex(row.file) && row.scene->version && TouchesIndex(row, number));
}

inline std::string Damaged(std::string bytes, Harm harm, std::size_t at) {
    switch (harm) {
        case Harm::kFlipped:
            bytes[at] = static_cast<char>(~bytes[at]);
            break;
        case Harm::kZero:
            bytes[at] = '\0';
            break;
        case Harm::kHigh:
            bytes[at] = '\x80';
            break;
        case Harm::kLineFeed:
            bytes[at] = '\n';
            break;
        case Harm::kCut:
            bytes.resize(at);
            break;
        case Harm::kDoubled:
            bytes.insert(at, 1, bytes[at]);
            break;
    }
    return bytes;
}

inline std::string BytesBefore(const DamageRow& row) {
    const Files& files = row.scene->files;
    return files.count(row.file) ? files.at(row.file) : OtherFiles().at(row.file);
}

// What a group may keep under its own name.
constexpr const wchar_t* kOwnExtensions[] = {L".idx", L".idx~", L".log", L".id~", L".lo~", L".flt"};

inline bool IsOwn(const std::wstring& name) {
    for (const wchar_t* extension : kOwnExtensions) {
        if (name == kDamagedGroup + extension) return true;
    }
    return false;
}

// Puts the scene's files into the folder, one of them damaged.
inline void PlaceDamage(const TempFolder& folder, const DamageRow& row) {
    for (const wchar_t* extension : kOwnExtensions)
        DeleteFileW(folder.FilePath(kDamagedGroup + extension).c_str());
    for (const auto& [name, bytes] : row.scene->files)
        folder.Write(name, bytes);
    folder.Write(row.file, Damaged(BytesBefore(row), row.harm, row.at));
}

// Every file of others is there as it was, and none beside the group's own is new. Ends with a clean folder.
inline void ExpectOthersAlone(const TempFolder& folder, const DamageRow& row) {
    Files others = OtherFiles();
    for (const auto& [name, bytes] : others) {
        if (name != row.file) EXPECT_EQ(folder.Read(name), bytes) << Ascii(name);
    }
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW(folder.FilePath(L"*").c_str(), &found);
    do {
        const std::wstring name = found.cFileName;
        const bool known = others.count(name) || IsOwn(name);
        if (known || (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) continue;
        // A damaged name is the name of another group.
        EXPECT_EQ(row.file, L"group.dat") << "new: " << Ascii(name);
        DeleteFileW(folder.FilePath(name).c_str());
    } while (FindNextFileW(search, &found));
    FindClose(search);
    if (others.count(row.file)) folder.Write(row.file, others.at(row.file));
}

// Every so many-th row of `total`, so that about `wanted` are left in which no way of going bad is missing;
// every one when PELNOR_DAMAGE is set.
inline std::size_t DamageStep(std::size_t total, std::size_t wanted) {
    std::size_t step = std::getenv("PELNOR_DAMAGE") ? 1 : total / wanted + 1;
    while (step % 2 == 0 || step % 3 == 0)
        ++step;
    return step;
}

// Calls `run` for about `wanted` rows of a scene's table, each byte of each of its files in every way, until
// it answers false. Answers how many there were.
template <class Function>
std::size_t ForEachDamage(const Scene& scene, std::size_t wanted, Function run) {
    std::vector<DamageRow> rows;
    for (const std::wstring& file : scene.damaged) {
        DamageRow row{&scene, file, Harm::kFlipped, 0};
        for (const std::size_t size = BytesBefore(row).size(); row.at < size; ++row.at) {
            for (const Harm harm : kHarms)
                rows.push_back({&scene, file, harm, row.at});
        }
    }
    std::size_t done = 0;
    for (std::size_t i = 0, step = DamageStep(rows.size(), wanted); i < rows.size(); i += step) {
        ++done;
        if (!run(rows[i])) break;
    }
    return done;
}

inline int FailureCount() {
    return testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count();
}
