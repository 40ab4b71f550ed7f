// The README's C++ examples cannot go stale: each ```cpp block of README.md is
// the marked part ("// [readme]" to "// [/readme]") of a program in
// docs/snippets/, which the build compiles against the shared library; the
// program runs, and prints exactly the lines that the block's "// prints ..."
// comments promise, in their order.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "child_runner.h"
#include "common/temp_tree.h"

namespace {

// The snippets in the README's order.
const char* const kSnippets[] = {"time",  "messaging",  "streams", "writers",
                                 "files", "foundation", "text"};

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

// The README's ```cpp blocks, each as its lines.
std::vector<std::vector<std::string>> ReadmeBlocks() {
  std::vector<std::vector<std::string>> blocks;
  bool inside = false;
  for (const std::string& line : Lines(ReadFile(TOV_TEST_SOURCE_DIR "/../README.md"))) {
    if (!inside && line == "```cpp") {
      inside = true;
      blocks.emplace_back();
    } else if (inside && line == "```") {
      inside = false;
    } else if (inside) {
      blocks.back().push_back(line);
    }
  }
  return blocks;
}

// The marked lines of a snippet, without the indentation they share.
std::vector<std::string> MarkedLines(const std::string& name) {
  const std::string path = TOV_TEST_SOURCE_DIR "/../docs/snippets/" + name + ".cpp";
  std::vector<std::string> marked;
  bool inside = false;
  for (const std::string& line : Lines(ReadFile(path))) {
    if (line.find("// [/readme]") != std::string::npos) break;
    if (inside) marked.push_back(line);
    if (line.find("// [readme]") != std::string::npos) inside = true;
  }
  std::size_t indent = std::string::npos;
  for (const std::string& line : marked) {
    if (!line.empty()) indent = std::min(indent, line.find_first_not_of(' '));
  }
  for (std::string& line : marked) line = line.size() >= indent ? line.substr(indent) : "";
  return marked;
}

// What the "// prints X" comments promise, one line each.
std::vector<std::string> PromisedOutput(const std::vector<std::string>& block) {
  std::vector<std::string> promised;
  for (const std::string& line : block) {
    const std::size_t at = line.find("// prints ");
    if (at != std::string::npos) promised.push_back(line.substr(at + 10));
  }
  return promised;
}

TEST(ReadmeSnippets, EveryBlockIsTheMarkedPartOfASnippet) {
  const auto blocks = ReadmeBlocks();
  ASSERT_EQ(blocks.size(), std::size(kSnippets));
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    SCOPED_TRACE(kSnippets[i]);
    const auto marked = MarkedLines(kSnippets[i]);
    ASSERT_FALSE(marked.empty());
    EXPECT_EQ(blocks[i], marked);
  }
}

TEST(ReadmeSnippets, EverySnippetPrintsWhatTheReadmeSays) {
  for (const char* name : kSnippets) {
    SCOPED_TRACE(name);
    tovtest::TempTree tree("readme");
    tovtest::ChildOptions options;
    options.workDir = tree.Native();
    options.captureDir = tree.Native();
    const auto result = tovtest::RunChild(
        std::string(README_SNIPPET_DIR) + "/readme_" + name + README_SNIPPET_SUFFIX, options);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(Lines(result.out), PromisedOutput(MarkedLines(name)));
  }
}

}  // namespace
