// What the private-profile functions do to a file: one table, from the rules of the format, for every
// platform.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quillmoor::testing {

struct IniReadCase {
  const char* name;
  std::string file;
  const char *section, *key;
  std::string value;
};

inline std::vector<IniReadCase> iniReadCases() {
  return {
      {"line feeds alone", "[s]\nk=v\n", "s", "k", "v"},
      {"no final line end", "[s]\r\nk=v", "s", "k", "v"},
      {"case", "[SeCtion]\r\nKEY=v\r\n", "sECTION", "key", "v"},
      {"blanks around", "  [ s ]  \r\n  k  =  v  \r\n", "s", "k", "v"},
      {"blanks inside", "[s]\r\nk=a  b\r\n", "s", "k", "a  b"},
      {"double quotes", "[s]\r\nk=\"  v \"\r\n", "s", "k", "  v "},
      {"single quotes", "[s]\r\nk='v'\r\n", "s", "k", "v"},
      {"one pair only", "[s]\r\nk=\"\"v\"\"\r\n", "s", "k", "\"v\""},
      {"unequal quotes", "[s]\r\nk=\"v'\r\n", "s", "k", "\"v'"},
      {"a lone quote", "[s]\r\nk=\"\r\n", "s", "k", "\""},
      {"equals signs in the value", "[s]\r\nk=a=b=\r\n", "s", "k", "a=b="},
      {"empty value", "[s]\r\nk=\r\n", "s", "k", ""},
      {"comment", "[s]\r\n;k=no\r\nk=v\r\n", "s", "k", "v"},
      {"semicolon in the value", "[s]\r\nk=v;w\r\n", "s", "k", "v;w"},
      {"first key of two", "[s]\r\nk=1\r\nk=2\r\n", "s", "k", "1"},
      {"only the first section of two", "[s]\r\nk=1\r\n[s]\r\nj=3\r\n", "s", "j", ""},
      {"keys before any section", "k=1\r\n[s]\r\nj=2\r\n", "s", "k", ""},
      {"bracket in the name", "[a]b]\r\nk=v\r\n", "a]b", "k", "v"},
      {"missing section", "[s]\r\nk=v\r\n", "t", "k", ""},
      {"no sections", "just some text\r\n", "s", "k", ""},
      {"empty file", "", "s", "k", ""},
      // Characters of two bytes, the second of which looks like another.
      {"half of the name is a bracket", "[\x83\x5D\x81\x5B]\r\nk=v\r\n", "\x83\x5D\x81\x5B", "k", "v"},
      {"half of the value is a bar", "[s]\r\nk=\x83\x7C~|~\x83\x7C\r\n", "s", "k", "\x83\x7C~|~\x83\x7C"},
      {"ANSI bytes", "[\xFC]\r\nk=\xE4\xF6\r\n", "\xFC", "k", "\xE4\xF6"},
      {"longer than the buffer", "[s]\r\nk=" + std::string(150'000, 'x') + "\r\n", "s", "k",
       std::string(99'999, 'x')},
      {"behind a long value", "[s]\r\nk=" + std::string(150'000, 'x') + "\r\nj=v\r\n", "s", "j", "v"},
  };
}

struct IniWriteCase {
  const char* name;
  std::string before;
  const char *section, *key;
  std::string value;
  std::string after;
  std::optional<std::string> read{};  // what is read then, where it is not the value
};

inline std::vector<IniWriteCase> iniWriteCases() {
  return {
      {"into nothing", "", "s", "k", "v", "[s]\r\nk=v\r\n"},
      {"empty value", "", "s", "k", "", "[s]\r\nk=\r\n"},
      {"over a value", "[s]\r\nk=old\r\nj=1\r\n", "s", "k", "new", "[s]\r\nk=new\r\nj=1\r\n"},
      {"another section", "[s]\r\nk=1\r\n", "t", "j", "2", "[s]\r\nk=1\r\n[t]\r\nj=2\r\n"},
      {"into the middle", "[s]\r\nk=1\r\n[t]\r\nj=2\r\n", "s", "l", "3",
       "[s]\r\nk=1\r\nl=3\r\n[t]\r\nj=2\r\n"},
      {"behind a missing line end", "[s]\r\nk=1", "s", "j", "2", "[s]\r\nk=1\r\nj=2\r\n"},
      {"comments stay", ";c\r\n[s]\r\n;d\r\nk=1\r\n", "s", "k", "2", ";c\r\n[s]\r\n;d\r\nk=2\r\n"},
      {"the first of two sections", "[s]\r\nk=1\r\n[s]\r\nk=2\r\n", "s", "k", "3",
       "[s]\r\nk=3\r\n[s]\r\nk=2\r\n"},
      {"the first of two keys", "[s]\r\nk=1\r\nk=2\r\n", "s", "k", "3", "[s]\r\nk=3\r\nk=2\r\n"},
      {"a name spelled otherwise", "[S]\r\n Key = 1\r\n", "s", "kEY", "2", "[S]\r\nKey=2\r\n"},
      {"the value that is there", "[s]\r\n k = v \r\n", "s", "K", "v", "[s]\r\n k = v \r\n"},
      {"the value that is there in quotes", "[s]\r\nk=\"v\"\r\n", "s", "k", "v", "[s]\r\nk=v\r\n"},
      {"double quotes", "", "s", "k", "\"v\"", "[s]\r\nk=\"v\"\r\n", "v"},
      {"single quotes", "", "s", "k", "'v'", "[s]\r\nk='v'\r\n", "v"},
      {"quotes inside", "", "s", "k", "a \"b\" 'c", "[s]\r\nk=a \"b\" 'c\r\n"},
      {"quoted blanks", "", "s", "k", "\" v \"", "[s]\r\nk=\" v \"\r\n", " v "},
      {"blanks around", "", "s", "k", " \tv ", "[s]\r\nk=v \r\n", "v"},
      {"blanks alone", "", "s", "k", "  ", "[s]\r\nk=\r\n", ""},
      {"a long value", "[s]\r\nk=1\r\nj=2\r\n", "s", "k", std::string(90'000, 'x'),
       "[s]\r\nk=" + std::string(90'000, 'x') + "\r\nj=2\r\n"},
      {"a value longer than is read", "", "s", "k", std::string(150'000, 'x'),
       "[s]\r\nk=" + std::string(150'000, 'x') + "\r\n", std::string(99'999, 'x')},
      {"half of the name is a bracket", "", "\x83\x5D", "k", "\x83\x5B", "[\x83\x5D]\r\nk=\x83\x5B\r\n"},
  };
}

}  // namespace quillmoor::testing
