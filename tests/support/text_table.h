// Tables of test rows in text files (UTF-8), which people review.
#pragma once

#include <string>
#include <vector>

// A row begins with "== sentence" and goes to the next empty line. Its lines that begin with "= " are what
// must come out; the others are the suite's. "#" begins a comment.
//     def NAME       the lines up to the next empty one may be had as "NAME ARGUMENTS", $1 to $3 being the
//                    arguments
//     {x*9}          xxxxxxxxx
//     \r \n \\ \x1b  these bytes
struct TableRow {
    std::string sentence;
    std::vector<std::string> lines;
    std::string expected;  // without the "= ", each line with its end
};

// `name` is relative to tests/.
std::vector<TableRow> ReadTable(const std::string& name);

// Fails the test when the outcome is not the expected one, and shows it as the table would have it.
void CheckOutcome(const TableRow& row, const std::string& outcome);

// The escapes undone, and made: of control characters, and of 20 or more of the same character. What is very
// long is only begun, and its size follows.
std::string Unescaped(const std::string& text);
std::string Escaped(const std::string& text);

std::string FromSjis(const std::string& text);
std::string ToSjis(const std::string& text);

// The outcomes, each with its line end, at the places 0, 1, 2 ...: places with the same outcome that follow
// each other share a line.
class Outcomes {
  public:
    void Add(const std::string& outcome);
    std::string Text() const;

  private:
    struct Range {
        std::size_t first, last;
        std::string outcome;
    };
    std::vector<Range> ranges_;
    std::size_t count_ = 0;
};
