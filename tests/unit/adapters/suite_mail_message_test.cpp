#include "adapters/suite/mail_message.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "automation/text.h"
#include "unit/adapters/suite_world.h"

namespace talvex::adapters::suite {
namespace {

using nlohmann::json;
using suite_test::ReadMail;

MailMessage Plain() {
  return {"20261121T143005-1",
          {"Daniel Reed", "d.reed@example.com"},
          {"Emma Clarke", "e.clarke@example.org"},
          "Budget warning",
          "First line\r\nSecond line\r\n",
          automation::Date::Civil(2026, 11, 21, 14, 30, 5)};
}

json Address(const std::string& name, const std::string& address) {
  return {{"name", name}, {"address", address}};
}

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t from = 0; from < text.size();) {
    const std::size_t end = text.find("\r\n", from);
    EXPECT_NE(end, std::string::npos) << "a last line without its end: " << text.substr(from);
    if (end == std::string::npos) break;
    lines.push_back(text.substr(from, end - from));
    from = end + 2;
  }
  return lines;
}

TEST(SuiteMailMessage, IsTheSameForAnotherReader) {
  const json mail = ReadMail(MailText(Plain()));
  EXPECT_EQ(mail["defects"], json::array());
  EXPECT_EQ(mail["from"], json::array({Address("Daniel Reed", "d.reed@example.com")}));
  EXPECT_EQ(mail["to"], json::array({Address("Emma Clarke", "e.clarke@example.org")}));
  EXPECT_EQ(mail["subject"], "Budget warning");
  EXPECT_EQ(mail["date"], "Sat, 21 Nov 2026 14:30:05 -0000");
  EXPECT_EQ(mail["id"], "<20261121T143005-1@example.com>");
  EXPECT_EQ(mail["type"], "text/plain; charset=\"utf-8\"");
  EXPECT_EQ(mail["body"], "First line\r\nSecond line\r\n");
  EXPECT_EQ(mail["headers"], json({"From", "To", "Subject", "Date", "Message-ID", "MIME-Version",
                                   "Content-Type", "Content-Transfer-Encoding"}));
}

TEST(SuiteMailMessage, KeepsPlainTextsReadableInTheFileItself) {
  const std::string text = MailText(Plain());
  EXPECT_NE(text.find("\r\nSubject: Budget warning\r\n"), std::string::npos);
  EXPECT_NE(text.find("From: \"Daniel Reed\"\r\n <d.reed@example.com>\r\n"), std::string::npos);
  EXPECT_NE(text.find("\r\n\r\nFirst line\r\nSecond line\r\n"), std::string::npos);
}

TEST(SuiteMailMessage, CarriesLettersOfAnyScript) {
  MailMessage message = Plain();
  message.from.name = "Hélène Møreau-Østergård von und zu den Überaus Langen Familiennamen";
  message.to.name = "経理部 佐藤";
  message.subject =
      "Budgetwarnung für Bürobedarf: 予算 €1.000 ist überschritten 😀 "
      "und noch viele weitere Wörter, die nicht in eine Zeile passen würden";
  message.body = "Genehmigter Betrag: 12,50 € = 100%\r\nΑγορά\r\n";
  const json mail = ReadMail(MailText(message));
  EXPECT_EQ(mail["defects"], json::array());
  EXPECT_EQ(mail["from"], json::array({Address(message.from.name, "d.reed@example.com")}));
  EXPECT_EQ(mail["to"], json::array({Address(message.to.name, "e.clarke@example.org")}));
  EXPECT_EQ(mail["subject"], message.subject);
  EXPECT_EQ(mail["body"], "Genehmigter Betrag: 12,50 € = 100%\r\nΑγορά\r\n");
}

TEST(SuiteMailMessage, AnEncodedWordHoldsWholeCharacters) {
  MailMessage message = Plain();
  for (int i = 0; i < 60; ++i) message.subject += i % 2 == 0 ? "é" : "€😀";
  const json words = suite_test::Python(R"(
import email.header, json, sys
raw = open(sys.argv[1], "rb").read().decode("ascii")
words = [w for line in raw.split("\r\n") for w in line.split(" ") if w.startswith("=?")]
print(json.dumps([email.header.decode_header(w)[0][0].decode("utf-8") for w in words]))
)",
                                        MailText(message));
  ASSERT_GT(words.size(), 3U);
  std::string joined;
  for (const auto& word : words) joined += word.get<std::string>();
  EXPECT_EQ(joined, message.subject);
}

TEST(SuiteMailMessage, LineBreaksInSubjectAndNamesMakeNoHeader) {
  MailMessage message = Plain();
  message.subject = "Hello\r\nBcc: thief@example.com\n\nbody of the thief";
  message.from.name = "Daniel\r\nX-Evil: 1";
  message.to.name = "Emma\nCc: thief@example.com\x7F";
  const json mail = ReadMail(MailText(message));
  EXPECT_EQ(mail["headers"].size(), 8U);
  EXPECT_EQ(mail["subject"], "HelloBcc: thief@example.combody of the thief");
  EXPECT_EQ(mail["from"], json::array({Address("DanielX-Evil: 1", "d.reed@example.com")}));
  EXPECT_EQ(mail["to"], json::array({Address("EmmaCc: thief@example.com", "e.clarke@example.org")}));
  EXPECT_EQ(mail["body"], "First line\r\nSecond line\r\n");
}

TEST(SuiteMailMessage, KeepsTextsThatMeanSomethingToAReader) {
  MailMessage message = Plain();
  message.from.name = R"(Reed, "Dan" \ <x@y.z>)";
  message.to.name = "=?UTF-8?Q?Eve?=";
  message.subject = "  =?UTF-8?Q?not_encoded?=  ";
  const json mail = ReadMail(MailText(message));
  EXPECT_EQ(mail["defects"], json::array());
  EXPECT_EQ(mail["from"], json::array({Address(message.from.name, "d.reed@example.com")}));
  EXPECT_EQ(mail["to"], json::array({Address(message.to.name, "e.clarke@example.org")}));
  EXPECT_EQ(mail["subject"], message.subject);
}

TEST(SuiteMailMessage, TakesEmptyNamesSubjectAndBody) {
  MailMessage message = Plain();
  message.from.name.clear();
  message.to.name.clear();
  message.subject.clear();
  message.body.clear();
  const json mail = ReadMail(MailText(message));
  EXPECT_EQ(mail["defects"], json::array());
  EXPECT_EQ(mail["from"], json::array({Address("", "d.reed@example.com")}));
  EXPECT_EQ(mail["to"], json::array({Address("", "e.clarke@example.org")}));
  EXPECT_EQ(mail["subject"], "");
  EXPECT_EQ(mail["body"], "");
}

TEST(SuiteMailMessage, KeepsEveryCharacterOfABody) {
  MailMessage message = Plain();
  message.body = "blanks at the end   \r\ntab\t\r\n=3D is no equals sign\r\n.\r\nFrom here\r\n\r\n" +
                 std::string(500, 'x') + std::string(300, '=') + "\r\n";
  for (int i = 0; i < 200; ++i) message.body += "é ";
  message.body += "\r\n";
  const json mail = ReadMail(MailText(message));
  EXPECT_EQ(mail["defects"], json::array());
  EXPECT_EQ(mail["body"], message.body);
}

TEST(SuiteMailMessage, MakesEveryKindOfLineEndOne) {
  MailMessage message = Plain();
  message.body = "one\ntwo\rthree\r\n\nfive";
  const std::string text = MailText(message);
  EXPECT_TRUE(text.ends_with("\r\n\r\none\r\ntwo\r\nthree\r\n\r\nfive\r\n"));
}

TEST(SuiteMailMessage, ItsLinesAreShortAndPlainAscii) {
  MailMessage message = Plain();
  message.subject = std::string(2000, 's') + std::string(300, ' ') + std::string(300, '\xE9');
  message.from.name = std::string(500, 'n');
  message.to.name = std::string(40, '"') + "é";
  message.body = std::string(5000, 'b') + "\n" + std::string(1000, '\xFF') + std::string("\0\x01", 2);
  message.body += "\nblanks at the end  \n \n";
  for (const std::string& line : LinesOf(MailText(message))) {
    EXPECT_LE(line.size(), 76U) << line;
    EXPECT_FALSE(line.ends_with(' ')) << "servers cut it: " << line;
    for (const char c : line) EXPECT_TRUE(c >= ' ' && c <= '~') << line;
  }
}

TEST(SuiteMailMessage, KnowsTheDayOfTheWeek) {
  MailMessage message = Plain();
  message.date = automation::Date::Civil(1969, 12, 31, 0, 0, 0);
  EXPECT_NE(MailText(message).find("\r\nDate: Wed, 31 Dec 1969 00:00:00 -0000\r\n"), std::string::npos);
  message.date = automation::Date::Civil(2028, 2, 29, 23, 59, 59);
  EXPECT_NE(MailText(message).find("\r\nDate: Tue, 29 Feb 2028 23:59:59 -0000\r\n"), std::string::npos);
}

TEST(SuiteMailMessage, AnAddressIsOnePlainAddress) {
  for (const auto* good : {"a@b", "d.reed@example.com", "x+y=z_1'%@sub.example.co"})
    EXPECT_TRUE(IsMailAddress(good)) << good;
  for (const auto* bad : {"", "@", "a@", "@b", "a", "a@b@c", "a b@c", "a@b\r\nBcc: x@y", "a@b,c", "a@b>",
                          "<a@b", "a@b;c", "\"a\"@b", "a(b)@c", "a@[1]", "a\\@b", "é@b", "a@é", "a:b@c"}) {
    EXPECT_FALSE(IsMailAddress(bad)) << bad;
  }
}

}  // namespace
}  // namespace talvex::adapters::suite
