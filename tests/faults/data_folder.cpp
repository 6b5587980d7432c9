#include "tests/faults/data_folder.h"

#include <algorithm>

namespace {

std::string LogOf(const std::vector<Article>& articles) {
    std::string log;
    for (const Article& article : articles)
        log += StoredText(article);
    return log;
}

RecordBytes RecordOf(const Article& article, std::size_t start) {
    const std::string text = StoredText(article);
    RecordBytes record{article.flags,
                       article.number,
                       static_cast<uint32_t>(start),
                       static_cast<uint32_t>(text.size()),
                       article.subject,
                       "0305",
                       "Taro"};
    record.textOffset = static_cast<uint32_t>(start + text.find("Subject: ") + 9);
    record.textLength = static_cast<uint32_t>(article.subject.size());
    return record;
}

HeaderBytes HeaderOf(const std::vector<Article>& articles, uint32_t version) {
    HeaderBytes header;
    header.version = version;
    header.lastFetched = header.serverLast = articles.back().number;
    header.recordCount = static_cast<uint32_t>(articles.size());
    header.status = "new";
    for (const Article& article : articles) {
        header.unread += !(article.flags & 1);
        header.high += (article.flags & 6) == 4;
        header.low += (article.flags & 6) == 2;
    }
    return header;
}

std::string IndexOf(const std::vector<Article>& articles, uint32_t version) {
    if (version == 1) return std::to_string(articles.back().number) + "\r\nnew\r\n5\r\n0\r\n";
    std::string bytes = Bytes(HeaderOf(articles, version));
    std::size_t start = 0;
    for (const Article& article : articles) {
        const std::string record = Bytes(RecordOf(article, start));
        bytes += version == 5   ? record
                 : version == 4 ? record.substr(0, 84)
                                : record.substr(0, 16) + std::string(48, '#');
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
