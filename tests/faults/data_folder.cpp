#include "tests/faults/data_folder.h"

#include <algorithm>

namespace {

std::string LogOf(const std::vector<Article>& articles) {
    std::string log;
    for (const Article& article : articles)
        log += StoredText(article);
    return log;
}

std::string Padded(std::string text, std::size_t size) {
    text.resize(size, '\0');
    return text;
}

std::string HeaderOf(const std::vector<Article>& articles, uint32_t version) {
    const uint32_t last = articles.back().number;
    uint32_t unread = 0, high = 0, low = 0;
    for (const Article& article : articles) {
        unread += !(article.flags & 1);
        high += (article.flags & 6) == 4;
        low += (article.flags & 6) == 2;
    }
    return Word(version) + Word(last) + Word(last) + Word(0) + Word(static_cast<uint32_t>(articles.size())) +
           Word(0) + Padded("new", 64) + (version < 3 ? "" : Word(unread)) +
           (version < 5 ? "" : Word(high) + Word(low));
}

std::string RecordOf(const Article& article, std::size_t start, uint32_t version) {
    const std::string text = StoredText(article);
    const auto place = static_cast<uint32_t>(start);
    const auto subject = static_cast<uint32_t>(start + text.find("Subject: ") + 9);
    return Word(article.flags) + Word(article.number) + Word(place) +
           Word(static_cast<uint32_t>(text.size())) +
           (version < 4 ? std::string(48, '#') : Padded(article.subject, 48) + "0305" + Padded("Taro", 16)) +
           (version < 5 ? "" : Word(subject) + Word(static_cast<uint32_t>(article.subject.size())));
}

std::string IndexOf(const std::vector<Article>& articles, uint32_t version) {
    if (version == 1) return std::to_string(articles.back().number) + "\r\nnew\r\n5\r\n0\r\n";
    std::string bytes = HeaderOf(articles, version);
    std::size_t start = 0;
    for (const Article& article : articles) {
        bytes += RecordOf(article, start, version);
        start += StoredText(article).size();
    }
    return bytes;
}

}  // namespace

Files GroupFiles(const std::wstring& group, const std::vector<Article>& articles, GroupIs state) {
    const std::wstring idx = group + L".idx", log = group + L".log", newIdx = group + L".id~";
    const std::vector<Article> kept = Unread(articles);
    switch (state) {
        case GroupIs::kWithoutIndex:
            return {{log, LogOf(articles)}};
        case GroupIs::kUpgradeCutOff:
            return {{idx + L"~", IndexOf(articles, 5)}, {log, LogOf(articles)}};
        case GroupIs::kDeletionWithoutLog:
            return {{idx, IndexOf(articles, 5)}, {newIdx, IndexOf(kept, 5)}, {group + L".lo~", LogOf(kept)}};
        case GroupIs::kDeletionWithNewLog:
            return {{idx, IndexOf(articles, 5)}, {newIdx, IndexOf(kept, 5)}, {log, LogOf(kept)}};
        case GroupIs::kDeletionWithoutIndex:
            return {{newIdx, IndexOf(kept, 5)}, {log, LogOf(kept)}};
        default:
            return {{idx, IndexOf(articles, static_cast<uint32_t>(state) + 1)}, {log, LogOf(articles)}};
    }
}

std::vector<Article> Unread(std::vector<Article> articles) {
    const auto isRead = [](const Article& article) { return (article.flags & 1) != 0; };
    articles.erase(std::remove_if(articles.begin(), articles.end(), isRead), articles.end());
    return articles;
}

std::string HeadOf(const Article& article) {
    return "From: a@b.jp (Taro)\r\nSubject: " + article.subject + "\r\nDate: 5 Mar 1998\r\n";
}

std::string StoredText(const Article& article) {
    return HeadOf(article) + "X-Local-Seq: " + std::to_string(article.number) + "\r\n\r\n" + article.body +
           "================\r\n";
}

std::string Word(uint32_t value) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(value >> shift & 0xFF);
    return bytes;
}
