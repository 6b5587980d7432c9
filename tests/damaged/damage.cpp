#include "tests/damaged/damage.h"

namespace {

const std::vector<Article> kArticles = {
    {1, "low0", 0, "one\r\n\r\n"}, {2, "low1", 1 | 2, "> two\r\n=\r\n"}, {3, "high2", 4, "\x82\xA0\r\n"}};
const std::vector<Article> kOthers = {{7, "high7", 0, "seven\r\n"}};

constexpr Harm kByteHarms[] = {Harm::kFlipped,  Harm::kZero, Harm::kHigh,
                               Harm::kLineFeed, Harm::kCut,  Harm::kDoubled};

bool IsCutOffDeletion(GroupIs state) {
    return state >= GroupIs::kDeletionWithoutLog;
}

bool IsScanned(GroupIs state) {
    return state == GroupIs::kVersion1 || state == GroupIs::kWithoutIndex;
}

// Where an article stands in the log.
struct Extent {
    std::size_t start, end, previous;  // the article's before it, or its own
};

Extent ExtentOf(const DamageRow& row, std::size_t number) {
    const std::vector<Article> articles = SceneArticles(*row.scene);
    Extent extent = {0, 0, 0};
    for (std::size_t i = 0; i <= number; ++i) {
        extent.previous = i > 0 ? extent.start : 0;
        extent.start = extent.end;
        extent.end += StoredText(articles[i]).size();
    }
    return extent;
}

bool TouchesLog(const DamageRow& row, std::size_t number) {
    const Extent extent = ExtentOf(row, number);
    // A deletion's new log that is longer than its new index says is indexed anew.
    const bool scanned =
        IsScanned(row.scene->state) || (row.harm == Harm::kDoubled && IsCutOffDeletion(row.scene->state));
    if (row.harm == Harm::kCut || (row.harm == Harm::kDoubled && !scanned)) return extent.end > row.at;
    // In a log that is scanned, a separator that is none any more costs the article behind it too.
    return (scanned ? extent.previous : extent.start) <= row.at && row.at < extent.end;
}

constexpr std::size_t kCount = 16, kCountEnd = 20;  // in an index's header

// How an index of each version is laid out: sizes of header and record.
struct Layout {
    std::size_t header, record;
};
constexpr Layout kLayouts[] = {{0, 0}, {88, 64}, {92, 64}, {92, 84}, {100, 92}};

Layout LayoutOf(GroupIs state) {
    return kLayouts[state > GroupIs::kCurrent ? 4 : static_cast<std::size_t>(state)];
}

bool TouchesIndex(const DamageRow& row, std::size_t number) {
    constexpr std::size_t kVersionEnd = 4, kPlace = 8, kPlaceEnd = 16;
    const Layout layout = LayoutOf(row.scene->state);
    const std::size_t record = layout.header + layout.record * number;
    // A header that counts more records than there are is reported as an error.
    if (row.harm == Harm::kCut) return true;
    // Another version, if it is one at all, is made anew from the log.
    if (row.harm == Harm::kDoubled) return row.at > 0 && record + layout.record > row.at;
    if (row.at < kVersionEnd) return false;
    const bool count = kCount <= row.at && row.at < kCountEnd;
    return count || (record + kPlace <= row.at && row.at < record + kPlaceEnd);
}

}  // namespace

std::vector<Scene> Scenes() {
    const std::wstring idx = kDamagedGroup + L".idx", log = kDamagedGroup + L".log",
                       flt = kDamagedGroup + L".flt", newIdx = kDamagedGroup + L".id~",
                       newLog = kDamagedGroup + L".lo~";
    return {{"Current", GroupIs::kCurrent, {idx, log, flt, L"group.dat"}},
            {"LostIndex", GroupIs::kWithoutIndex, {log, flt}},
            {"UpgradeCutOff", GroupIs::kUpgradeCutOff, {idx + L"~", log}},
            {"DeletionWithoutLog", GroupIs::kDeletionWithoutLog, {idx, newIdx, newLog}},
            {"DeletionWithNewLog", GroupIs::kDeletionWithNewLog, {idx, newIdx, log}},
            {"DeletionWithoutIndex", GroupIs::kDeletionWithoutIndex, {newIdx, log}},
            {"Version1", GroupIs::kVersion1, {idx, log}},
            {"Version2", GroupIs::kVersion2, {idx, log}},
            {"Version3", GroupIs::kVersion3, {idx, log}},
            {"Version4", GroupIs::kVersion4, {idx, log}}};
}

Files SceneFiles(const Scene& scene) {
    Files files = GroupFiles(kDamagedGroup, kArticles, scene.state);
    files[kDamagedGroup + L".flt"] = "+ high\r\n- low\r\n";
    files.merge(GroupFiles(L"fj.b", kOthers, GroupIs::kCurrent));
    files.merge(Files{{L"fj.b.flt", "+ high\r\n"},
                      {L"group.dat", "fj.a\r\nfj.b\r\n"},
                      {L"active.dat", "fj.a\r\nfj.b\r\n"},
                      {L"category.dat", "fj\r\n"},
                      {L"draft\\", ""},
                      {L"draft\\note.txt", "a draft"},
                      {L"", ""}});
    return files;
}

std::vector<Article> SceneArticles(const Scene& scene) {
    return IsCutOffDeletion(scene.state) ? Unread(kArticles) : kArticles;
}

std::string Describe(const DamageRow& row) {
    constexpr const char* kNames[] = {"flipped",           "zero",    "0x80", "a line feed",
                                      "cut off from here", "doubled", "lost"};
    return std::string(row.scene->name) + ": " + std::string(row.file.begin(), row.file.end()) + ", byte " +
           std::to_string(row.at) + " " + kNames[static_cast<int>(row.harm)];
}

std::vector<DamageRow> RowsOf(const Scene& scene) {
    std::vector<DamageRow> rows;
    const Files files = SceneFiles(scene);
    for (const std::wstring& file : scene.damaged) {
        rows.push_back({&scene, file, Harm::kLost, 0});
        for (std::size_t at = 0; at < files.at(file).size(); ++at) {
            for (const Harm harm : kByteHarms)
                rows.push_back({&scene, file, harm, at});
        }
    }
    return rows;
}

std::string Damaged(std::string bytes, Harm harm, std::size_t at) {
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
        case Harm::kLost:
            break;
    }
    return bytes;
}

bool IsLog(const std::wstring& name) {
    return name.find(L".lo") != std::wstring::npos;
}
bool IsIndex(const std::wstring& name) {
    return name.find(L".id") != std::wstring::npos;
}

bool Touches(const DamageRow& row, std::size_t number) {
    const GroupIs state = row.scene->state;
    if (IsLog(row.file)) return row.harm == Harm::kLost || TouchesLog(row, number);
    if (!IsIndex(row.file) || IsScanned(state)) return false;
    if (!IsCutOffDeletion(state)) return row.harm != Harm::kLost && TouchesIndex(row, number);
    // The index that is whole has the articles, or the log has; but where the old index seems to be about the
    // new log, nothing shows that it is not.
    const bool oldCountsFewer = row.file == kDamagedGroup + L".idx" && kCount <= row.at && row.at < kCountEnd;
    const bool nothingNew = row.file == kDamagedGroup + L".id~" && row.harm == Harm::kLost;
    return state == GroupIs::kDeletionWithNewLog && (oldCountsFewer || nothingNew);
}
