#include "pages/WrenCodePageForm.h"

#include <charconv>

#include "WrenUtils.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <iconv.h>
#endif

namespace wren {

#ifdef _WIN32

namespace {

std::vector<int>* collected = nullptr;

BOOL CALLBACK AddCodePage(LPSTR text) {
  collected->push_back(std::atoi(text));
  return TRUE;
}

}  // namespace

bool EnumSystemCodePageNumbers(std::vector<int>& codePages, std::string& error) {
  codePages.clear();
  collected = &codePages;
  const BOOL ok = EnumSystemCodePagesA(AddCodePage, CP_SUPPORTED);
  collected = nullptr;
  if (ok) return true;
  char message[512] = "";
  FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                 GetLastError(), 0, message, sizeof message, nullptr);
  error = Trim(message);
  return false;
}

#else

namespace {

/// A Windows code page and the converter names it may go by; "CP<n>" is tried first.
struct TCodePageNames {
  int codePage;
  std::vector<const char*> names;
};

/// The Windows code pages, with the names glibc's iconv knows them by where "CP<n>" is not one.
const std::vector<TCodePageNames>& WindowsCodePages() {
  static const std::vector<TCodePageNames> pages = {
      {37, {"IBM037"}},       {437, {}},    {500, {}},     {708, {"ISO-8859-6"}},
      {720, {}},              {737, {}},    {775, {}},     {850, {}},
      {852, {}},              {855, {}},    {857, {}},     {858, {}},
      {860, {}},              {861, {}},    {862, {}},     {863, {}},
      {864, {}},              {865, {}},    {866, {}},     {869, {}},
      {870, {}},              {874, {}},    {875, {}},     {932, {}},
      {936, {}},              {949, {}},    {950, {}},     {1026, {}},
      {1047, {}},             {1140, {}},   {1141, {}},    {1142, {}},
      {1143, {}},             {1144, {}},   {1145, {}},    {1146, {}},
      {1147, {}},             {1148, {}},   {1149, {}},    {1200, {"UTF-16LE"}},
      {1201, {"UTF-16BE"}},   {1250, {}},   {1251, {}},    {1252, {}},
      {1253, {}},             {1254, {}},   {1255, {}},    {1256, {}},
      {1257, {}},             {1258, {}},   {1361, {"JOHAB"}},
      {10000, {"MACINTOSH"}}, {10007, {"MAC-CYRILLIC"}},   {10017, {"MACUKRAINIAN"}},
      {10029, {"MAC-CENTRALEUROPE"}},       {10079, {"MAC-IS"}},
      {12000, {"UTF-32LE"}},  {12001, {"UTF-32BE"}},       {20127, {"ASCII"}},
      {20261, {"T.61-8BIT"}}, {20269, {"ISO_6937"}},       {20273, {"IBM273"}},
      {20277, {"IBM277"}},    {20278, {"IBM278"}},         {20280, {"IBM280"}},
      {20284, {"IBM284"}},    {20285, {"IBM285"}},         {20290, {"IBM290"}},
      {20297, {"IBM297"}},    {20420, {"IBM420"}},         {20423, {"IBM423"}},
      {20424, {"IBM424"}},    {20838, {"IBM838"}},         {20866, {"KOI8-R"}},
      {20871, {"IBM871"}},    {20880, {"IBM880"}},         {20905, {"IBM905"}},
      {20924, {"IBM924"}}  ,   {20936, {"GB2312"}},         {21025, {"IBM1025"}},
      {21866, {"KOI8-U"}},    {28591, {"ISO-8859-1"}},     {28592, {"ISO-8859-2"}},
      {28593, {"ISO-8859-3"}},                             {28594, {"ISO-8859-4"}},
      {28595, {"ISO-8859-5"}},                             {28596, {"ISO-8859-6"}},
      {28597, {"ISO-8859-7"}},                             {28598, {"ISO-8859-8"}},
      {28599, {"ISO-8859-9"}},                             {28603, {"ISO-8859-13"}},
      {28605, {"ISO-8859-15"}},                            {50220, {"ISO-2022-JP"}},
      {50225, {"ISO-2022-KR"}},                            {50227, {"ISO-2022-CN"}},
      {51932, {"EUC-JP"}},    {51936, {"EUC-CN"}},         {51949, {"EUC-KR"}},
      {51950, {"EUC-TW"}},    {52936, {"HZ-GB-2312"}},     {54936, {"GB18030"}},
      {65000, {"UTF-7"}},     {65001, {"UTF-8"}},
  };
  return pages;
}

/// True when iconv can convert from the named encoding.
bool ConverterExists(const std::string& name) {
  const iconv_t cd = iconv_open("UTF-8", name.c_str());
  if (cd == reinterpret_cast<iconv_t>(-1)) return false;
  iconv_close(cd);
  return true;
}

}  // namespace

bool EnumSystemCodePageNumbers(std::vector<int>& codePages, std::string& error) {
  codePages.clear();
  if (!ConverterExists("UTF-8")) {
    error = "the system has no character set converters";
    return false;
  }
  for (const TCodePageNames& page : WindowsCodePages()) {
    bool supported = ConverterExists("CP" + std::to_string(page.codePage));
    for (size_t i = 0; !supported && i < page.names.size(); ++i)
      supported = ConverterExists(page.names[i]);
    if (supported) codePages.push_back(page.codePage);
  }
  return true;
}

#endif

TCodePageForm::TCodePageForm(TCodePageEnumerator enumerate) {
  lbCodePages.items.clear();
  std::vector<int> codePages;
  std::string error;
  if (!enumerate(codePages, error)) {
    errorMessage = "Unable to retrieve code pages : " + error;
    return;
  }
  for (int codePage : codePages)
    lbCodePages.items.push_back(std::to_string(codePage) + " - " + CodePageToString(codePage));
}

bool TCodePageForm::OKClick(std::string& message) {
  if (lbCodePages.itemIndex < 0) {
    message = "Please select a code page.";
    return false;
  }
  modalResult = TModalResult::mrOk;
  return true;
}

bool TCodePageForm::ShowModal() {
  modalResult = TModalResult::mrNone;
  int index = lbCodePages.itemIndex;
  if (WrenDesignApplicationServices().ChooseFromList(caption, lblCodePages.caption,
                                                      lbCodePages.items, index)) {
    // A chooser that answers outside the list leaves nothing selected, so OK refuses it.
    lbCodePages.itemIndex =
        index >= 0 && index < static_cast<int>(lbCodePages.items.size()) ? index : -1;
    std::string message;
    if (OKClick(message)) return true;
  }
  CancelClick();
  return false;
}

int TCodePageForm::GetCodePage() const {
  const std::string item = lbCodePages.Selected();
  const std::string number = item.substr(0, item.find(' '));
  int value = 0;
  std::from_chars(number.data(), number.data() + number.size(), value);
  return value;
}

}  // namespace wren
