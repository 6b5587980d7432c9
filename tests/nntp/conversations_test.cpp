// What a run says, stores and shows, reply by reply: plays conversations.txt, which says how its rows are
// written, on the machine in memory.
#include <gmock/gmock.h>

#include <sstream>

#include "resources/resource.h"
#include "store/group_changes.h"
#include "store/index.h"
#include "tests/faults/operations.h"
#include "tests/support/text_table.h"
#include "text/convert.h"
#include "text/messages.h"

namespace {

const Article kOld = {4, "old", 0, "text\r\n"};
constexpr std::size_t kLargestBlock = 1 << 19;  // of memory, whatever a server sends
constexpr uint32_t kBuffer = 4096;              // of a receive
constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

struct Step {
    char kind;  // S the server says, C it hears, E it ends the stream, N a new connection begins
    std::string bytes;
};

// The server: one step after the other, so that whatever comes too early, too late or not at all shows.
class Server {
  public:
    // At the byte `at` of all that it says `harm` happens: "end", "silence", "zero" (one is put in) or "cut"
    // (a receive ends there). A receive gives at most `piece` bytes.
    Server(const std::vector<Step>& steps, const std::string& harm, std::size_t at, std::size_t piece)
        : steps_(steps), harm_(harm), at_(at), inPieces_(piece < kBuffer || harm == "cut") {
        machine.network = {};
        machine.network.piece = piece;
        machine.network.connect = [this] { Connect(); };
        machine.network.hear = [this](const std::string& line) { Hear(line); };
    }

    std::size_t Said() const { return said_; }
    std::string Problem() const {
        return problem_.empty() && Next() != '.' ? "not heard: " + steps_[next_].bytes : problem_;
    }

  private:
    char Next() const { return next_ < steps_.size() ? steps_[next_].kind : '.'; }

    void Connect() {
        if (connected_ && Next() != 'N') problem_ += "connected, not heard: " + steps_[next_].bytes + "; ";
        while (connected_ && Next() != '.' && Next() != 'N')
            ++next_;
        if (Next() == 'N') ++next_;
        connected_ = true;
        muted_ = false;
        GoOn();
    }

    void Hear(const std::string& line) {
        if (!machine.network.says.empty() && line != "QUIT" && !inPieces_)
            problem_ += "too early: " + line + "; ";
        if (Next() != 'C' || steps_[next_].bytes != line) {
            problem_ += "heard: " + line + "; ";
            return;
        }
        ++next_;
        GoOn();
    }

    void GoOn() {
        for (; Next() == 'S' || Next() == 'E'; ++next_) {
            if (Next() == 'S') Say(steps_[next_].bytes);
            if (Next() == 'E') machine.network.ended = true;
        }
    }

    void Say(std::string bytes) {
        Network& network = machine.network;
        const std::size_t at = at_ - said_;
        said_ += bytes.size();
        if (muted_) return;
        if (at < bytes.size()) {
            if (harm_ == "zero") bytes.insert(at, 1, '\0');
            if (harm_ == "cut" && at > 0) network.stop = network.says.size() + at;
            muted_ = harm_ == "end" || harm_ == "silence";
            if (muted_) bytes.resize(at);
            network.ended = harm_ == "end";
        }
        network.says += bytes;
    }

    const std::vector<Step>& steps_;
    const std::string harm_;
    const std::size_t at_;
    const bool inPieces_;
    std::size_t next_ = 0, said_ = 0;
    bool connected_ = false, muted_ = false;
    std::string problem_;
};

// What the index and the log say of each other: the articles by number, those that are not as most are with
// their text, and bytes of the log that no record names.
std::string DescribeArticles(const std::string& index, const std::string& log, bool& whole) {
    std::string numbers, texts;
    std::size_t end = 0;
    whole = true;
    const auto skipTo = [&](std::size_t place) {
        if (place != end) numbers += " +" + std::to_string(place - end) + " bytes", whole = false;
    };
    const std::size_t indexEnd = kHeaderBytes + std::size_t{kRecordBytes} * WordAt(index, 16);
    for (std::size_t at = kHeaderBytes; at < std::min(indexEnd, index.size()); at += kRecordBytes) {
        const uint32_t number = WordAt(index, at + 4), start = WordAt(index, at + 8);
        skipTo(start);
        end = start + WordAt(index, at + 12);
        std::string text = log.substr(std::min<std::size_t>(start, log.size()), end - start);
        const std::string seam = "X-Local-Seq: " + std::to_string(number) + "\r\n\r\n";
        numbers += " " + std::to_string(number);
        if (text == StoredText(kOld) || text == "Subject: s\r\n" + seam + "text\r\n================\r\n")
            continue;
        if (text.find(seam) != text.npos) text.replace(text.find(seam), seam.size(), "|");
        texts += std::to_string(number) + ": " + Escaped(FromSjis(text)) + "\n";
    }
    skipTo(log.size());
    return numbers + "\n" + texts;
}

// Whether an index made anew from the log is the one that stands there.
bool RebuildsAsItIs(const std::wstring& group) {
    std::string& index = FileOf(group + L".idx");
    const std::string before = index;
    GroupStore store;
    if (!SetNames(store, kFolder.c_str(), group.c_str()) || !ReadHeader(store)) return false;
    index.resize(kHeaderBytes);
    index.replace(16, 4, 4, '\0');
    return RebuildFromLog(store) && index == before;
}

std::string DescribeGroup(const std::wstring& group) {
    const std::string index = FileOf(group + L".idx"), log = FileOf(group + L".log");
    const uint32_t count = WordAt(index, 16);
    bool whole = false;
    const std::string articles = DescribeArticles(index, log, whole);
    EXPECT_TRUE(WordAt(index, 88) == count && index.size() >= kHeaderBytes + count * kRecordBytes);
    const bool rebuilds = !whole || RebuildsAsItIs(group);
    return Plain(group) + " " + std::to_string(WordAt(index, 4)) + "/" + std::to_string(WordAt(index, 8)) +
           " \"" + Escaped(FromSjis(index.c_str() + 24)) + "\":" + articles +
           (rebuilds ? "" : "another index is made anew\n");
}

class Conversation {
  public:
    explicit Conversation(const TableRow& row) {
        for (const std::string& line : row.lines) {
            const std::size_t space = std::min(line.find(' '), line.size());
            const std::string word = line.substr(0, space);
            const std::string text = Unescaped(line.substr(std::min(space + 1, line.size())));
            if (word == "S:" || word == "S-") {
                steps_.push_back({'S', text + (word == "S:" ? "\r\n" : "")});
            } else if (word == "C:") {
                steps_.push_back({'C', text});
            } else if (line == "hang up" || line == "anew") {
                steps_.push_back({line == "anew" ? 'N' : 'E', ""});
            } else {
                options_[word] = ToSjis(text);
            }
        }
        if (!Has("list") && !Has("unconnected")) steps_.push_back({'C', "QUIT"});
    }

    std::string Outcome() {
        const std::string harm = Option("every");
        if (harm.empty()) return Play("", kNowhere);
        (void)Play(harm, kNowhere);
        Outcomes outcomes;
        for (std::size_t at = 0, size = said_; at < size; ++at)
            outcomes.Add(Play(harm, at));
        return outcomes.Text();
    }

  private:
    bool Has(const std::string& option) const { return options_.count(option) != 0; }
    std::string Option(const std::string& name) const { return Has(name) ? options_.at(name) : ""; }
    std::wstring Wide(const std::string& name) const {
        const std::string secret = std::exchange(machine.secret, "");  // this block is not the program's
        const std::wstring text = ToWide(Option(name).c_str()).get();
        machine.secret = secret;
        return text;
    }
    const char* Given(const std::string& name) const {
        return Has(name) ? options_.at(name).c_str() : nullptr;
    }
    uint32_t Number(const std::string& name, uint32_t otherwise) const {
        return Has(name) ? static_cast<uint32_t>(std::stoul(Option(name))) : otherwise;
    }

    std::vector<std::wstring> Groups() const {
        std::vector<std::wstring> groups;
        std::istringstream names(Has("groups") ? Option("groups") : "fj.test");
        for (std::string name; std::getline(names, name, ',');)
            groups.emplace_back(ToWide(name.c_str()).get());
        return groups;
    }

    void Prepare() const {
        machine.storage = {};
        FileOf(L"");
        FileOf(L"group.dat") = "fj.test\r\n";
        for (const wchar_t* group : {L"fj.test", L"fj.two"})
            for (const auto& [name, bytes] : GroupFiles(group, {kOld}, GroupIs::kCurrent))
                FileOf(name) = bytes;
        FileOf(L"fj.old.idx") = std::string(kHeaderBytes, '\4');
        if (Has("last")) FileOf(L"fj.test.idx").replace(4, 4, Word(Number("last", 0)));
    }

    void Set(Settings& settings) const {
        if (Has("host")) CopyCut(settings.Server, kServerSize, Wide("host").c_str());
        settings.Port = Number("port", settings.Port);
        settings.Limit = Number("limit", 9);
        if (Has("user")) settings.UserID = CopyText(Option("user").c_str());
        if (Has("password")) settings.Password = CopyText(Option("password").c_str());
        if (Has("user") && !Has("password")) UseNextDialog([this](HWND prompt) { UsePrompt(prompt); });
    }

    void UsePrompt(HWND prompt) const {
        wchar_t user[99] = L"";
        GetDlgItemTextW(prompt, IDC_PASSWORD_USER, user, 99);
        EXPECT_EQ(user, Wide("user"));
        SetDlgItemTextW(prompt, IDC_PASSWORD_EDIT, Wide("typed").c_str());
        SendMessageW(prompt, WM_COMMAND, Has("typed") ? IDOK : IDCANCEL, 0);
    }

    // The n-th call of a function meets a full disk.
    std::function<DWORD(std::string_view)> Fault() const {
        std::istringstream words(Option("fault"));
        std::string failing;
        int left = 0;
        words >> failing >> left;
        return [=](std::string_view call) mutable -> DWORD {
            return call == failing && --left == 0 ? ERROR_DISK_FULL : 0;
        };
    }

    std::string Play(const std::string& harm, std::size_t at) {
        Prepare();
        Server server(steps_, harm, at, Number("piece", kBuffer));
        machine.largestBlock = 0;
        machine.fault = Fault();
        RefuseDialogs(!harm.empty() && !Has("list"));
        machine.secret = Option(Has("typed") ? "typed" : "password");
        if (machine.secret.size() < 5) machine.secret.clear();
        machine.secretsFreed = 0;
        const std::size_t held = HeldByProgram();
        const ::Outcome outcome = Has("list")
                                      ? FetchList(Given("user"), Given("password"))
                                      : Download(Groups(), [this](Settings& settings) { Set(settings); });
        machine.fault = nullptr;
        EXPECT_EQ(HeldByProgram(), held) << "something was not given back";
        EXPECT_LT(machine.largestBlock, kLargestBlock);
        EXPECT_EQ(machine.secretsFreed, 0);
        if (harm.empty() || harm == "cut") EXPECT_EQ(server.Problem(), "");
        said_ = server.Said();
        return Report(outcome);
    }

    std::string Report(const ::Outcome& outcome) const {
        std::string report = outcome.done ? "done" : Escaped(outcome.told.substr(0, outcome.told.size() - 1));
        if (!outcome.bar.empty()) report += ", bar: " + outcome.bar;
        if (machine.network.silence > 0)
            report += ", " + std::to_string(machine.network.silence) + " s of silence";
        report += "\n";
        if (Has("list")) return report + List(L"active.dat") + List(L"category.dat");
        for (const std::wstring& group : Groups())
            if (machine.storage.files.count(kFolder + group + L".log")) report += DescribeGroup(group);
        return report;
    }
    static std::string List(const wchar_t* name) {
        return Plain(name) + ": " + Escaped(FromSjis(FileOf(name))) + "\n";
    }

    std::map<std::string, std::string> options_;
    std::vector<Step> steps_;
    std::size_t said_ = 0;
};

TEST(Conversations, AreAsWritten) {
    for (const TableRow& row : ReadTable("nntp/conversations.txt")) {
        SCOPED_TRACE(row.sentence);
        CheckOutcome(row, Conversation(row).Outcome());
    }
}

}  // namespace
