// The table of named references: its size, its keys, its code points, and the decoder's use of it.
#include "xmlutils/LxEntityTable.h"

#include "lorvane/uLxXMLUtils.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace lorvane {
namespace {

TEST(EntityTable, Has253NamesWith253DistinctKeys) {
  const auto Table = EntityTable();
  EXPECT_EQ(Table.size(), 253u);
  std::set<std::string_view> Names;
  std::set<std::uint32_t> Keys;
  for (const TEntity& E : Table) {
    Names.insert(E.Name);
    Keys.insert(FoldEntityName(E.Name.data(), E.Name.size()));
  }
  EXPECT_EQ(Names.size(), 253u);
  EXPECT_EQ(Keys.size(), 253u);
}

// Each of U+00A0..U+00FF has exactly one name, as the Latin-1 set gives them.
TEST(EntityTable, LatinOneNamesCoverA0ToFFOnce) {
  std::set<WideChar> Seen;
  for (const TEntity& E : EntityTable())
    if (E.Char >= 0xA0 && E.Char <= 0xFF) {
      EXPECT_TRUE(Seen.insert(E.Char).second) << E.Name;
    }
  EXPECT_EQ(Seen.size(), 96u);
}

TEST(EntityTable, SpotChecksOfCodePoints) {
  const std::pair<std::u16string_view, WideChar> Cases[] = {
      {u"&nbsp;", 160},    {u"&shy;", 173},     {u"&times;", 215},    {u"&divide;", 247},
      {u"&yuml;", 255},    {u"&fnof;", 402},    {u"&Alpha;", 913},    {u"&Sigma;", 931},
      {u"&sigmaf;", 962},  {u"&omega;", 969},   {u"&thetasym;", 977}, {u"&piv;", 982},
      {u"&bull;", 8226},   {u"&image;", 8465},  {u"&weierp;", 8472},  {u"&alefsym;", 8501},
      {u"&crarr;", 8629},  {u"&hArr;", 8660},   {u"&forall;", 8704},  {u"&lowast;", 8727},
      {u"&there4;", 8756}, {u"&sdot;", 8901},   {u"&lang;", 9001},    {u"&rang;", 9002},
      {u"&loz;", 9674},    {u"&diams;", 9830},  {u"&quot;", 34},      {u"&amp;", 38},
      {u"&OElig;", 338},   {u"&Yuml;", 376},    {u"&circ;", 710},     {u"&tilde;", 732},
      {u"&ensp;", 8194},   {u"&zwj;", 8205},    {u"&rsaquo;", 8250},  {u"&euro;", 8364},
      {u"&apos;", 39},     {u"&Aacute;", 193},  {u"&aacute;", 225},   {u"&Prime;", 8243},
      {u"&prime;", 8242},  {u"&Dagger;", 8225}, {u"&dagger;", 8224},
  };
  for (const auto& [Text, Char] : Cases)
    EXPECT_EQ(LxXMLToStr(Text), UnicodeString(1, Char)) << StringToUTF8(Text);
}

// The decoder finds every name of the table, in the case it has there.
TEST(EntityTable, DecoderFindsEveryName) {
  for (const TEntity& E : EntityTable()) {
    UnicodeString Text(1, u'&');
    Text += AsciiToString(E.Name);
    Text += u';';
    EXPECT_EQ(LxXMLToStr(Text), UnicodeString(1, E.Char)) << E.Name;
  }
}

TEST(EntityTable, FoldAddsMirroredBytesAndKeepsShortNames) {
  // t+m, h+y, e+s, t+a
  EXPECT_EQ(FoldEntityName("thetasym", 8), 0xE1E1D8D5u);
  EXPECT_EQ(FoldEntityName(u"euro", 4), 0x6575726Fu);
  // Sums wrap at 256: 0xFF + 0x02 gives 0x01; 'b' + 'g', 'c' + 'f', 'd' + 'e' give 0xC9.
  EXPECT_EQ(FoldEntityName(u"\u00FFbcdefg\u0002", 8), 0x01C9C9C9u);
  WideChar Char = 0;
  EXPECT_FALSE(FindEntity(0, Char));
  EXPECT_FALSE(FindEntity(0xFFFFFFFFu, Char));
  EXPECT_TRUE(FindEntity(FoldEntityName("lt", 2), Char));
  EXPECT_EQ(Char, u'<');
}

} // namespace
} // namespace lorvane
