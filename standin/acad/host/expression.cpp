#include "expression.h"

#include <vector>

#include "command_stack.h"
#include "state.h"

namespace host {

namespace {

constexpr int kMaxDepth = 32;

struct Item {
  enum Kind { kText, kSymbol, kList };
  Kind kind = kText;
  std::wstring text;
  std::vector<Item> items;
};

class Reader {
public:
  explicit Reader(const std::wstring& text) : mText(text) {}

  bool readItem(Item& item, int depth) {
    skipBlanks();
    if (atEnd() || depth > kMaxDepth)
      return false;
    if (mText[mPlace] == L'"')
      return readText(item);
    if (mText[mPlace] == L'(')
      return readList(item, depth);
    item.kind = Item::kSymbol;
    while (!atEnd() && !isBlank() && mText[mPlace] != L')' && mText[mPlace] != L'(' && mText[mPlace] != L'"')
      item.text += mText[mPlace++];
    return !item.text.empty();
  }

private:
  bool atEnd() const { return mPlace >= mText.size(); }
  bool isBlank() const { return mText[mPlace] <= L' '; }
  void skipBlanks() {
    while (!atEnd() && isBlank())
      ++mPlace;
  }
  bool readText(Item& item) {
    item.kind = Item::kText;
    for (++mPlace; !atEnd() && mText[mPlace] != L'"'; ++mPlace) {
      if (mText[mPlace] == L'\\' && ++mPlace >= mText.size())
        return false;
      item.text += mText[mPlace];
    }
    return mPlace++ < mText.size();
  }
  bool readList(Item& item, int depth) {
    item.kind = Item::kList;
    ++mPlace;
    for (skipBlanks(); !atEnd() && mText[mPlace] != L')'; skipBlanks()) {
      item.items.emplace_back();
      if (!readItem(item.items.back(), depth + 1))
        return false;
    }
    return mPlace++ < mText.size();
  }

  const std::wstring& mText;
  size_t mPlace = 0;
};

bool isCall(const Item& item, const wchar_t* name) {
  return item.kind == Item::kList && !item.items.empty() && item.items[0].kind == Item::kSymbol &&
         lowered(item.items[0].text) == name;
}

bool callMenucmd(const Item& call, std::wstring& result, std::wstring& error) {
  const bool hasText = call.items.size() == 2 && call.items[1].kind == Item::kText;
  if (hasText && evaluateMenuExpression(call.items[1].text, result))
    return true;
  error = L"bad argument to menucmd" + (hasText ? L": \"" + call.items[1].text + L"\"" : std::wstring());
  return false;
}

} // namespace

bool evaluateExpression(const std::wstring& text, const std::function<void(const std::wstring&)>& take,
                        std::wstring& error) {
  Item call;
  if (!Reader(text).readItem(call, 0) || call.kind != Item::kList || call.items.empty() ||
      call.items[0].kind != Item::kSymbol) {
    error = L"malformed expression";
    return false;
  }
  if (isCall(call, L"menucmd")) {
    std::wstring result;
    if (!callMenucmd(call, result, error))
      return false;
    print(result + L"\n");
    return true;
  }
  if (isCall(call, L"command")) {
    for (size_t i = 1; i < call.items.size(); ++i) {
      const Item& argument = call.items[i];
      std::wstring input = argument.text;
      if (isCall(argument, L"menucmd") && !callMenucmd(argument, input, error))
        return false;
      if (argument.kind == Item::kList && !isCall(argument, L"menucmd")) {
        error = L"bad argument to command";
        return false;
      }
      take(input);
    }
    return true;
  }
  if (callDefinedFunction(call.items[0].text))
    return true;
  error = L"no function definition: " + call.items[0].text;
  return false;
}

} // namespace host
