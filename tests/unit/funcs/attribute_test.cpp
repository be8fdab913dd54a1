// The functions of attributes, lists, texts, tables and files.
#include "tests/unit/funcs/functest.h"

#include <ctime>

#include "vex/inc/numtext.h"
#include "vex/src/md5.h"

namespace {

using Attributes = FunctionTest;

TEST_F(Attributes, AreCopiedRenamedAndRemoved) {
  hold({{"t {a=1, b=2}", "@CopyAttributes(a,b,b,a)", "", "t {a=2, b=1}"},
        {"t {a=1}", "@CopyAttributes(c,a,d,none)", "", "t {a=1, c=1, d=}"},
        {"t {a=1}", "@CopyAttributes(a)", "#844011"},
        {"t {a=1, b=2}", "@RenameAttributes(c,a)", "", "t {b=2, c=1}"},
        {"t {a=1, b=2}", "@RenameAttributes(a,b,b,a)", "", "t {a=2, b=1}"},
        {"t {a=1}", "@RenameAttributes(a,a)", ""},
        {"t {a=1}", "@RenameAttributes(b,none)", "", "t {a=1, b=}"},
        {"t {a=1}", "@RenameAttributes(b,a,c)", "#844011"},
        {"t {a=1, b=2, c=3}", "@RemoveAttributes(a,none,c)", "", "t {b=2}"},
        {"t {a=1, b=2, c=3} line 0 0, 1 1", "@KeepAttributes(b,none)", "", "t {b=2} line 0 0, 1 1"}});
  hold({{"t {a=1, b=2}", "@CopyAttributes(a,b)", "", "t {a=2, b=2}"},
        {"t {a=1}", "@RenameAttributes(b,a)", "", "t {b=1}"},
        {"t {a=1}", "@RemoveAttributes(a)", ""},
        {"t {a=1}", "@KeepAttributes(b)", ""}},
       true);
}

TEST_F(Attributes, TheSequenceFollows) {
  VEXFeaturePtr feature = makeFeature("t line 0 0, 1 1");
  for (const char* name : {"c", "a", "b", "d"}) feature->setSequenced(name, "1");
  EXPECT_EQ(perform(feature, "@RemoveAttributes(a)"), "");
  EXPECT_EQ(perform(feature, "@KeepAttributes(d,c)"), "");
  ASSERT_EQ(feature->sequence().size(), 2U);
  EXPECT_EQ(feature->sequence()[0].text(), "c");
  EXPECT_TRUE(feature->attributeExists("orv_geometry"));
  EXPECT_EQ(perform(feature, "@RenameAttributes(e,c)"), "");
  EXPECT_EQ(feature->sequence().size(), 1U);
}

TEST_F(Attributes, BasesAreConvertedBothWays) {
  hold({{"t", "@ConvertBase(255,10,16)", "FF"},
        {"t", "@ConvertBase(ff,16,2,12)", "000011111111"},
        {"t", "@ConvertBase(0,10,2)", "0"},
        {"t", "@ConvertBase(000,2,10,2)", "00"},
        {"t", "@ConvertBase(-zz,36,10)", "-1295"},
        {"t", "@ConvertBase(123456789012345678901234567890,10,36)", "BYW97UM9S91DLZ68TSI"},
        {"t", "@ConvertBase(,10,16)", ""},
        {"t", "@ConvertBase(-,10,16)", "#804002"},
        {"t", "@ConvertBase(12,2,10)", "#804002"},
        {"t", "@ConvertBase(1.5,10,2)", "#804002"},
        {"t", "@ConvertBase(1,1,10)", "#804002"},
        {"t", "@ConvertBase(1,10,37)", "#804002"},
        {"t", "@ConvertBase(1,ten,2)", "#804002"},
        {"t", "@ConvertBase(1,10,2,-3)", "#804002"},
        {"t", "@ConvertBase(1,10,2,999999999)", "#804002"},
        {"t", "@ConvertBase(1,10)", "#804001"}});
  hold({{"t", "@ConvertBase(FF,10,16)", "255"}, {"t", "@ConvertBase(FF,10)", "#804001"}}, true);
  VEXFeaturePtr feature = makeFeature("t");
  EXPECT_EQ(perform(feature, "@ConvertBase(" + std::string(1001, '1') + ",10,2)"), "#804002");
}

TEST_F(Attributes, SplitAtACharacter) {
  hold({{"t", "@Split(a:b,:,x,y)", "", "t {x=a, y=b}"},
        {"t", "@Split(a:b:c,:,x,y)", "", "t {x=a, y=b}"},
        {"t {y=old}", "@Split(a,:,x,y)", "", "t {x=a, y=old}"},
        {"t", "@Split(,:,x)", "", "t {x=}"},
        {"t", "@Split(a9b,9,x,y)", "", "t {x=a, y=b}"},
        {"t", "@Split(a\tb,\\t,x,y)", "", "t {x=a, y=b}"},
        {"t", "@Split(a\tb,\\x09,x,y)", "", "t {x=a, y=b}"},
        {"t", "@Split(a|b,\\174,x,y)", "", "t {x=a, y=b}"},
        {"t", "@Split(a\u00e9b,\\u00e9,x,y)", "", "t {x=a, y=b}"},
        {"t", "@Split(a\u20acb,\u20ac,x,y)", "", "t {x=a, y=b}"},
        {"t", "@Split(a\\b,\\\\,x,y)", "", "t {x=a, y=b}"},
        {"t", "@Split(a,\\tx,x)", "#843011"},
        {"t", "@Split(a,\\x1234,x)", "#843011"},
        {"t", "@Split(a,,x)", "#843004"},
        {"t", "@Split(a,:)", "#843003"}});
  EXPECT_EQ(engine_.logged("Split: Warning: Mismatch between # of pieces in `a:b:c' when separated with `:' and the "
                           "number of attribute names in the list `x,y'"),
            1U);
  hold({{"t", "@Split(a:b,:,x,y)", "", "t {x=a, y=b}"}, {"t", "@Split(a,:)", "#843003"}}, true);
  VEXFeaturePtr none;
  std::string result;
  EXPECT_EQ(numberOf(VEXCommandRegistry::instance().find("Split")->extract(none, {"a", ":", "x"}, result)), 843007U);
}

TEST_F(Attributes, SplitIntoWidths) {
  hold({{"t", "@Split(ab  cd,2s3s1s,x,y,z)", "", "t {x=ab, y=c, z=d}"},
        {"t", "@Split( a bcdefg,3-2,x,y)", "", "t {x=a, y=bc}"},
        {"t", "@Split(ab,2s3,x,y)", "", "t {x=ab, y=}"},
        {"t", "@Split(ab,ss,x)", "#843001"},
        {"t", "@Split(ab,99999999999s,x)", "#843001"},
        {"t", "@Split(ab,1s1,x)", "#843002"}});
}

TEST_F(Attributes, SplitIntoLists) {
  hold(
      {{"t", "@Split(a:b,:,n{})", "", "t {n{0}=a, n{1}=b}"},
       {"t {v=a:b\x01z:d}", "@Split(&v,:,n{}.x,n{}.y)", "", "t {n{0}.x=a, n{0}.y=b, n{1}.x=z, n{1}.y=d, v=a:b\x01z:d}"},
       {"t {v=xyz\x01uv}", "@Split(&v,1s2,n{}.x,n{}.y)", "",
        "t {n{0}.x=x, n{0}.y=yz, n{1}.x=u, n{1}.y=v, v=xyz\x01uv}"},
       {"t {v=xyz\x01uv}", "@Split(&v,2s,n{})", "", "t {n{0}=xy, n{1}=uv, v=xyz\x01uv}"},
       {"t", "@Split(a,:,n{}.b{})", "#843005"},
       {"t", "@Split(a,:,n{},b)", "#843006"},
       {"t", "@Split(a,:,b,n{})", "#843006"}});
}

TEST_F(Attributes, ListsAreSearchedCountedAndMerged) {
  const char* list = "t {n{0}.a=x, n{0}.b=p, n{11}.a=z, n{2}.a=y}";
  hold({{list, "@SearchList(n{}.a,y)", "2"},
        {list, "@SearchList(n{}.a,z)", "11"},
        {"t {n{0}=x, n{12}=z}", "@SearchList(n{},z)", "-1"},
        {list, "@SearchList(x{}.y,v)", "-1"},
        {list, "@SearchList(n,y)", "#830054"},
        {list, "@NumElements(n{})", "3"},
        {list, "@NumElements(n)", "3"},
        {list, "@NumElements(n{}.a)", "0"},
        {"t {n{0}.m{0}=x, n{0}.m{1}=y, n{1}.m{0}=z}", "@NumElements(n{}.m)", "3"},
        {"t {a{0}.v=1, b{0}.v=2, b{0}.w=3, b{10}.v=5, b{9}.v=4, c{0}=6}", "@MergeLists(a{},b{},c{})", "5",
         "t {a{0}.v=1, a{1}.v=2, a{1}.w=3, a{2}.v=4, a{3}.v=5, a{4}=6, b{0}.v=2, b{0}.w=3, b{10}.v=5, b{9}.v=4, "
         "c{0}=6}"},
        {"t {a{0}=1, a{1}=2}", "@MergeLists(a,a,none)", "4", "t {a{0}=1, a{1}=2, a{2}=1, a{3}=2}"},
        {"t", "@MergeLists(a{0},b{})", "#829002"},
        {"t", "@MergeLists(a{}.b{},b{})", "#829002"},
        {"t", "@MergeLists(a{})", "#829001"}});
  hold({{list, "@SearchList(n{}.a,y)", "2"}, {list, "@NumElements(n{})", ""}, {list, "@MergeLists(n{},n{})", ""}},
       true);
}

TEST_F(Attributes, GlobalVariablesOutliveFeatures) {
  hold({{"t", "@GlobalVariable(v)", ""},
        {"t", "@GlobalVariable(v,1)", "1"},
        {"t", "@GlobalVariable(v)", "1"},
        {"t", "@GlobalVariable()", "#823002"}});
  VEXCommandRegistry::instance().closeDownAll();
  EXPECT_EQ(engine_.logged("`v' ends with the value `1'"), 1U);
  hold({{"t", "@GlobalVariable(v)", ""}});
}

TEST_F(Attributes, TimestampTakesCarets) {
  const std::time_t now = std::time(nullptr);
  const std::string year = std::to_string(std::localtime(&now)->tm_year + 1900);
  VEXFeaturePtr feature = makeFeature("t");
  EXPECT_EQ(perform(feature, "@Timestamp(^Y)"), year);
  EXPECT_EQ(perform(feature, "@Timestamp(100% of ^Y ^^)"), "100% of " + year + " %");
  EXPECT_EQ(perform(feature, "@Timestamp(" + std::string(2000, 'x') + ")"), "");
  EXPECT_EQ(perform(feature, "@Timestamp(^Y)", true), "");
}

TEST_F(Attributes, FileNamesAreTakenApart) {
  hold({{"t", "@Filenamepart(EXTENSION,a.tar.gz)", "gz"},
        {"t", "@Filenamepart(rootname,d.x/a.tar.gz)", "a.tar"},
        {"t", "@Filenamepart(DIRNAME,C:\\data\\x.shp)", "C:\\data\\"},
        {"t", "@Filenamepart(DIRNAME,x.shp)", ""},
        {"t", "@Filenamepart(EXTENSION,d.x/a)", ""},
        {"t", "@Filenamepart(ROOTNAME,a)", "a"},
        {"t", "@Filenamepart(ROOTNAME,\x83\\b.c)", "\x83\\b"},
        {"t", "@Filenamepart(ROOTNAME,\x83)", "\x83"},
        {"t", "@Filenamepart(SUFFIX,a.b)", "#812012"},
        {"t", "@Filenamepart(ROOTNAME)", "#812010"}});
}

TEST_F(Attributes, LookupTables) {
  hold({{"t", "@Lookup(none,1)", "#828002"}});
  for (const auto& [row, number] : std::initializer_list<std::pair<const char*, std::uint32_t>>{
           {"Lookup", 828006},
           {"Lookup kinds", 828006},
           {"Lookup kinds 1", 828007},
           {"Lookup kinds 1 road 2", 828007},
           {"Lookup kinds 1 road 2 path 1 street", 0},
           {"Lookup kinds 3 rail", 828008},
           {"Lookup open 1 road <DEFAULT> KEY-or-KEY", 0},
           {"Lookup back 1 other <DEFAULT> other 9 <DEFAULT>", 0}})
    EXPECT_EQ(configure(row), number) << row;
  EXPECT_EQ(engine_.logged("`kinds' has the key `1' more than once"), 1U);
  hold({{"t {k=2}", "@Lookup(kinds,&k)", "path"},
        {"t", "@Lookup(kinds,1)", "street"},
        {"t", "@Lookup(kinds,3)", "#828005"},
        {"t", "@Lookup(kinds)", "#828001"},
        {"t", "@Lookup(open,1)", "road"},
        {"t", "@Lookup(open,x)", "x-or-x"}});
  hold({{"t", "@Lookup(kinds,path)", "2"},
        {"t", "@Lookup(kinds,nothing)", "#828005"},
        {"t", "@Lookup(none,1)", "#828004"},
        {"t", "@Lookup(kinds)", "#828003"},
        {"t", "@Lookup(back,other)", "1"},
        {"t", "@Lookup(back,unheard)", "9"}},
       true);
  VEXCommandRegistry::instance().closeDownAll();
  hold({{"t", "@Lookup(kinds,1)", "#828002"}});
}

TEST_F(Attributes, Structures) {
  for (const auto& [row, number] : std::initializer_list<std::pair<const char*, std::uint32_t>>{
           {"Reformat", 351004},
           {"Reformat TABLE_DEF x", 351005},
           {"Reformat STRUCT_DEF", 351006},
           {"Reformat STRUCT_DEF s a", 351006},
           {"Reformat STRUCT_DEF s a String(2) b", 351006},
           {"Reformat STRUCT_DEF s a Text(2)", 351010},
           {"Reformat STRUCT_DEF s a String", 351010},
           {"Reformat STRUCT_DEF s a String()", 351010},
           {"Reformat STRUCT_DEF s a String(0)", 351010},
           {"Reformat STRUCT_DEF s a String(4000000000)", 351010},
           {"Reformat STRUCT_DEF s a Real(5)", 351010},
           {"Reformat STRUCT_DEF s a Real(5,5)", 351010},
           {"Reformat STRUCT_DEF s a string(3) gap Filler(1) n Integer(4) r Real(6,2)", 0},
           {"Reformat STRUCT_DEF s a String(2)", 351007}})
    EXPECT_EQ(configure(row), number) << row;
  const std::vector<CallRow> encodes = {
      {"t {a=x, n=12, r=1.5}", "@Reformat(DestEncodeSrcDecode,s,all)", "x     12  1.50"},
      {"t {a=longer}", "@Reformat(DestEncodeSrcDecode,s,all)", "lon           "},
      {"t {a=h\u00fc\u00fc}", "@Reformat(DestEncodeSrcDecode,s,all)", "h\u00fc           "},
      {"t {a=xy\u00fc}", "@Reformat(DestEncodeSrcDecode,s,all)", "xy            "},
      {"t {n=12345}", "@Reformat(DestEncodeSrcDecode,s,all)", "#351012"},
      {"t {n=x}", "@Reformat(DestEncodeSrcDecode,s,all)", "#351012"},
      {"t {r=nan}", "@Reformat(DestEncodeSrcDecode,none,all)", "#351008"},
      {"t", "@Reformat(Encode,s,all)", "#351003"}};
  const std::vector<CallRow> decodes = {
      {"t {all=x y   12  1.50}", "@Reformat(DestDecodeSrcEncode,s,all)", "x y   12  1.50",
       "t {a=x y, all=x y   12  1.50, n=12, r=1.50}"},
      {"t {all=x}", "@Reformat(DestDecodeSrcEncode,s,all)", "x", "t {a=x, all=x, n=, r=}"},
      {"t", "@Reformat(DestDecodeSrcEncode,s,all)", "#351009"},
      {"t", "@Reformat(DestDecodeSrcEncode,s)", "#351002"}};
  hold(encodes);
  hold(decodes);
  VEXFeaturePtr feature = makeFeature("t {a=x, n=12, r=1.5}");
  EXPECT_EQ(perform(feature, "@Reformat(DestDecodeSrcEncode,s,all)", true), "x     12  1.50");
  feature->setAttribute("all", "q");
  EXPECT_EQ(perform(feature, "@Reformat(DestEncodeSrcDecode,s,all)", true), "q");
  EXPECT_EQ(describe(*feature), "t {a=q, all=q, n=, r=}");
  VEXFeaturePtr none;
  std::string result;
  VEXCommand* reformat = VEXCommandRegistry::instance().find("Reformat");
  EXPECT_EQ(numberOf(reformat->execute(none, {"DestEncodeSrcDecode", "s", "all"}, result)), 351011U);
}

TEST_F(Attributes, IdentifiersOfPlaces) {
  std::string text;
  for (std::uint32_t word : md5Digest("message digest")) text += std::to_string(word) + " ";
  EXPECT_EQ(text, "2104060921 2375268220 825186898 3496079786 ");  // f96b697d7cb7938d525a2f31aaf161d0
  VEXFeaturePtr feature = makeFeature("t line 1 2, 3 4");
  EXPECT_EQ(perform(feature, "@GOID()"), "#824006");
  feature->setCoordSys("LL-83");
  const std::string goid = perform(feature, "@GOID()");
  EXPECT_EQ(goid.size(), 32U);
  EXPECT_EQ(perform(feature, "@GOID()"), goid);
  EXPECT_EQ(perform(feature, "@GOID(verify," + goid + ")"), "1");
  std::string other = goid;
  other[3] = other[3] == '0' ? '1' : '0';
  EXPECT_EQ(perform(feature, "@GOID(VERIFY," + other + ")"), "0");
  feature->addCoord(5, 6);
  EXPECT_NE(perform(feature, "@GOID()"), goid);
  EXPECT_EQ(perform(feature, "@GOID()", true), "");
  hold({{"t", "@GOID(CHECK,x)", "#824001"},
        {"t", "@GOID(VERIFY,x)", "#824002"},
        {"t", "@GOID(VERIFY,0123456789012345678901234567890_)", "#824003"},
        {"t", "@GOID(VERIFY,ZZZZZZZZZZZZZZZZZZZZZZZZZZZZZZZZ)", "0"},
        // 30 digits of one byte: 15 times 11 is 165, and 256 - 165 is 5B.
        {"t", "@GOID(VERIFY,0B0B0B0B0B0B0B0B0B0B0B0B0B0B0BF0)", "0"},
        {"t", "@GOID(VERIFY,B0B0B0B0B0B0B0B0B0B0B0B0B0B0B05B)", "1"}});
}

TEST_F(Attributes, CommandsOfTheSystem) {
  hold({{"t", "@System(exit 3)", "768"}, {"t", "@System(true)", "0"}, {"t", "@System()", "#357001"}});
  hold({{"t", "@System(true)", "0"}}, true);
}

TEST_F(Attributes, FilesAreReadWrittenAndAddedTo) {
  const std::string path = scratchDirectory() + "file_function.txt";
  const auto call = [&path](const char* mode, const char* value = "") {
    return "@File(" + path + "," + mode + "," + value + ")";
  };
  VEXFeaturePtr feature = makeFeature("t");
  EXPECT_EQ(perform(feature, call("DestReadSrcWrite")), "#356004");
  EXPECT_EQ(perform(feature, call("DestWriteSrcRead", "one")), "");
  EXPECT_EQ(perform(feature, call("DestAppendSrcRead", "+two")), "");
  EXPECT_EQ(perform(feature, call("DestWriteSrcRead"), true), "one+two");
  EXPECT_EQ(perform(feature, call("DestReadSrcAppend", "+three"), true), "");
  EXPECT_EQ(perform(feature, call("DestReadSrcAppend")), "one+two+three");
  EXPECT_EQ(perform(feature, call("DestReadSrcWrite", "new"), true), "");
  EXPECT_EQ(perform(feature, call("DestReadSrcWrite")), "new");
  // More files than are kept open.
  for (int i = 0; i < 200; ++i)
    ASSERT_EQ(perform(feature, "@File(" + path + std::to_string(i % 100) + ",DestAppendSrcRead,x)"), "");
  EXPECT_EQ(perform(feature, "@File(" + path + "7,DestReadSrcWrite,)"), "xx");
  EXPECT_EQ(perform(feature, call("destwritesrcread")), "#356002");
  EXPECT_EQ(perform(feature, "@File(x,DestReadSrcWrite)"), "#356001");
  EXPECT_EQ(perform(feature, "@File(" + scratchDirectory() + "none/x,DestWriteSrcRead,v)"), "#356004");
  EXPECT_EQ(perform(feature, "@File(" + scratchDirectory() + ",DestReadSrcWrite,)"), "#356005");
  EXPECT_EQ(perform(feature, "@File(/dev/full,DestWriteSrcRead,v)"), "#356007");
  EXPECT_EQ(configure("File STARTUP_DELETE"), 356006U);
  EXPECT_EQ(configure("File DELETE " + path), 356006U);
  EXPECT_EQ(configure("File SHUTDOWN_DELETE " + path), 0U);
  EXPECT_EQ(perform(feature, call("DestReadSrcWrite")), "new");
  VEXCommandRegistry::instance().closeDownAll();
  EXPECT_EQ(perform(feature, call("DestReadSrcWrite")), "#356004");
  EXPECT_EQ(configure("File STARTUP_DELETE " + path + "7"), 0U);
  EXPECT_EQ(perform(feature, "@File(" + path + "7,DestReadSrcWrite,)"), "#356004");
}

}  // namespace
