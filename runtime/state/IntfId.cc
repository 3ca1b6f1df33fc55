#include "runtime/state/IntfId.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <iterator>

#include "runtime/lumo/Exception.h"
#include "runtime/state/McastTunnelIntfId.h"

namespace Lanx {

namespace {

using Kind = IntfId::Kind;

struct KindWords {
  Kind kind;
  std::string_view full;
  std::string_view brief;
  std::uint32_t minNumber;
  std::uint32_t maxNumber;
};

constexpr std::uint32_t anyNumber = 0xffffffff;

// VLAN names stop at 4095 rather than 4094: 4095 is not a VLAN a user may configure, but the
// system must be able to see and refuse an id that carries it.
constexpr KindWords kindWords[] = {
    {Kind::ethernet, "Ethernet", "Et", 0, 0xffff},
    {Kind::vlan, "Vlan", "Vl", 1, 0xfff},
    {Kind::portChannel, "Port-Channel", "Po", 0, anyNumber},
    {Kind::loopback, "Loopback", "Lo", 0, anyNumber},
    {Kind::vxlan, "Vxlan", "Vx", 0, anyNumber},
    {Kind::null, "Null", "Null", 0, anyNumber},
    {Kind::register_, "Register", "Register", 0, anyNumber},
    {Kind::tunnel, "Tunnel", "Tu", 0, anyNumber},
    {Kind::mcastTunnel, "McastTunnel", "Mt", 0, 0},
    {Kind::fwd, "fwd", "fwd", 0, anyNumber},
};

const KindWords* wordsOfKind(Kind kind) {
  auto found = std::find_if(std::begin(kindWords), std::end(kindWords),
                            [kind](const KindWords& w) { return w.kind == kind; });
  return found == std::end(kindWords) ? nullptr : found;
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
    auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return lower(x) == lower(y);
  });
}

const KindWords* wordsOfName(std::string_view word) {
  auto found = std::find_if(std::begin(kindWords), std::end(kindWords), [word](const KindWords& w) {
    return equalIgnoringCase(word, w.full) || equalIgnoringCase(word, w.brief);
  });
  return found == std::end(kindWords) ? nullptr : found;
}

// Decimal digits only, without a leading zero, so that each number has one spelling.
std::optional<std::uint32_t> parseNumber(std::string_view digits, const KindWords& words,
                                         std::string& reason) {
  std::uint64_t number = 0;
  auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (digits.empty() || error == std::errc::invalid_argument ||
      end != digits.data() + digits.size()) {
    reason = fmt::format("expected a number after \"{}\", found \"{}\"", words.full, digits);
    return std::nullopt;
  }
  if (digits.size() > 1 && digits.front() == '0') {
    reason = fmt::format("number \"{}\" has a leading zero", digits);
    return std::nullopt;
  }
  if (error == std::errc::result_out_of_range || number < words.minNumber ||
      number > words.maxNumber) {
    reason = fmt::format("{} number {} out of range {}..{}", words.full, digits, words.minNumber,
                         words.maxNumber);
    return std::nullopt;
  }
  return static_cast<std::uint32_t>(number);
}

std::optional<IntfId> parseEthernet(std::string_view numbers, const KindWords& words,
                                    std::string& reason) {
  std::uint16_t parts[IntfId::maxEthernetNumbers] = {};
  int count = 0;
  for (std::size_t start = 0; start <= numbers.size(); ++count) {
    if (count == IntfId::maxEthernetNumbers) {
      reason = fmt::format("more than {} numbers", IntfId::maxEthernetNumbers);
      return std::nullopt;
    }
    std::size_t slash = std::min(numbers.find('/', start), numbers.size());
    std::optional<std::uint32_t> part =
        parseNumber(numbers.substr(start, slash - start), words, reason);
    if (!part) return std::nullopt;
    parts[count] = static_cast<std::uint16_t>(*part);
    start = slash + 1;
  }
  switch (count) {
    case 1:
      return IntfId::ethernet(parts[0]);
    case 2:
      return IntfId::ethernet(parts[0], parts[1]);
    default:
      return IntfId::ethernet(parts[0], parts[1], parts[2]);
  }
}

std::optional<IntfId> parse(std::string_view name, std::string& reason) {
  if (name.empty()) {
    reason = "empty name";
    return std::nullopt;
  }
  if (name.front() == '{') {
    return Multicast::Tunnel::McastTunnelIntfId::fromScenarioForm(name, reason);
  }
  std::size_t firstDigit = std::min(name.find_first_of("0123456789"), name.size());
  std::string_view word = name.substr(0, firstDigit);
  std::string_view numbers = name.substr(firstDigit);
  const KindWords* words = wordsOfName(word);
  if (!words) {
    reason = fmt::format("unknown interface type \"{}\"", word);
    return std::nullopt;
  }
  if (words->kind == Kind::mcastTunnel) {
    return Multicast::Tunnel::McastTunnelIntfId::fromEndpointText(numbers, reason);
  }
  if (words->kind == Kind::ethernet) return parseEthernet(numbers, *words, reason);
  std::optional<std::uint32_t> number = parseNumber(numbers, *words, reason);
  if (!number) return std::nullopt;
  return IntfId::numbered(words->kind, *number);
}

}  // namespace

IntfId::IntfId(std::string_view name) : IntfId(fromNameOrThrow(name)) {}

std::optional<IntfId> IntfId::fromName(std::string_view name, std::string* whyNot) {
  std::string reason;
  std::optional<IntfId> id = parse(name, reason);
  if (!id && whyNot) *whyNot = fmt::format("bad interface name \"{}\": {}", name, reason);
  return id;
}

IntfId IntfId::fromNameOrThrow(std::string_view name) {
  std::string whyNot;
  std::optional<IntfId> id = fromName(name, &whyNot);
  if (!id) throw Lumo::Exception(whyNot);
  return *id;
}

std::string IntfId::name() const { return text(false); }

std::string IntfId::shortName() const { return text(true); }

std::string IntfId::text(bool shortForm) const {
  if (isEmpty()) return "";
  const KindWords* words = wordsOfKind(kind());
  auto unknownLayout = [this] { return fmt::format("IntfId({:#x})", value_); };
  if (!words) return unknownLayout();
  std::string_view word = shortForm ? words->brief : words->full;
  switch (kind()) {
    case Kind::ethernet: {
      std::uint64_t count = payload() & 0xff;
      std::uint64_t numbers[] = {payload() >> 40, (payload() >> 24) & 0xffff,
                                 (payload() >> 8) & 0xffff};
      if (count < 1 || count > maxEthernetNumbers) return unknownLayout();
      return fmt::format("{}{}", word, fmt::join(numbers, numbers + count, "/"));
    }
    case Kind::mcastTunnel:
      return fmt::format("{}{}", word, Multicast::Tunnel::McastTunnelIntfId::endpointText(*this));
    default:
      return fmt::format("{}{}", word, payload());
  }
}

}  // namespace Lanx
