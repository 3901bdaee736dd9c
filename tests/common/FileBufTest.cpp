#include "common/FileBuf.h"

#include "TestSupport.h"

namespace genetrain {
namespace {

// Every byte, a zero after the last; a new load replaces the old content; gzip is told by its
// first bytes, not by the name.
TEST(FileBuf, KeepsEveryByteAndAddsAZero) {
  test::ScratchDir dir;
  const std::string content("a\0b\r\n\xff", 6);
  const std::pair<std::string, std::string> cases[] = {
      {"bytes", content}, {"empty", ""}, {"in.fa", test::Gzip(content)}, {"plain.gz", content}};
  FileBuf buf;
  for (const auto& [name, stored] : cases) {
    ASSERT_TRUE(buf.Load(dir.Write(name, stored).c_str())) << name;
    ASSERT_NE(buf.Data(), nullptr);
    EXPECT_EQ(buf.View(), name == "empty" ? "" : content) << name;
    EXPECT_EQ(buf.End(), buf.Data() + buf.Size());
    EXPECT_EQ(*buf.End(), '\0');
  }
}

TEST(FileBuf, MessagesInTheOrderOfTheChecksAndAnEmptyBuffer) {
  test::ScratchDir dir;
  FileBuf buf;
  ASSERT_TRUE(buf.Load(dir.Write("in", "content").c_str()));
  const test::Outcome run = test::Capture([&] {
    return buf.Load(nullptr) || buf.Load("") || buf.Load(dir.Path("none").c_str()) ||
           buf.Load(dir.Path("none/deeper").c_str());
  });
  EXPECT_FALSE(run.ok);
  EXPECT_EQ(run.err, "error: file name is missing\nerror: file name is missing\nerror: file <" +
                         dir.Path("none") + "> is not found\nerror: file <" +
                         dir.Path("none/deeper") + "> is not found\n");
  EXPECT_EQ(buf.Data(), nullptr);
  EXPECT_EQ(buf.Size(), 0u);
}

}  // namespace
}  // namespace genetrain
