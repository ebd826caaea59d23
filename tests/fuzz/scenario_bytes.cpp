// Encodes scenarios as bytes and decodes them: both use one list of members and their order. Tested by mutate_test.cpp.
#include "fuzz/scenario_bytes.h"

#include <concepts>
#include <optional>
#include <type_traits>
#include <vector>

#include "fuzz/input.h"

namespace fuzz {
namespace {

constexpr unsigned kBits = 7;  // of a number, in each of its bytes; the eighth is set if another byte follows

// --- Members ---

template <class Bytes, class... Member>
void Pass(Bytes& bytes, Member&... member) {
  (bytes.Take(member), ...);
}

template <class Bytes>
void Members(Bytes& bytes, model::FieldDecl& field) {
  Pass(bytes, field.name, field.type, field.size, field.id, field.version, field.count, field.refer, field.attr2, field.nameless,
       field.without_structure, field.odd_unit_size, field.odd_count, field.odd_flags);
}

template <class Bytes>
void Members(Bytes& bytes, model::IndexDecl& index) {
  Pass(bytes, index.name, index.columns);
}

template <class Bytes>
void Members(Bytes& bytes, model::MetaDecl& meta) {
  Pass(bytes, meta.name, meta.is_union, meta.fields, meta.key, meta.split, meta.indexes, meta.attr, meta.without_key_list,
       meta.odd_key_count);
}

template <class Bytes>
void Members(Bytes& bytes, model::LibraryDecl& library) {
  Pass(bytes, library.version, library.flag, library.metas);
}

template <class Bytes>
void Members(Bytes& bytes, model::LogGate& gate) {
  Pass(bytes, gate.absent, gate.high, gate.low, gate.can_write);
}

template <class Bytes>
void Members(Bytes& bytes, model::Call& call) {
  auto operation = static_cast<unsigned>(call.operation);
  Pass(bytes, operation, call.old_table, call.new_table, call.without_old, call.without_new, call.table_type, call.init_version,
       call.server, call.whitelist, call.list_num);
  call.operation = static_cast<model::Operation>(operation % static_cast<unsigned>(model::Operation::kEnd));
}

template <class Bytes>
void Members(Bytes& bytes, model::Scenario& scenario) {
  Pass(bytes, scenario.gate, scenario.calls, scenario.old_library, scenario.new_library);
}

// --- Writing ---

struct Writer {
  void Take(bool& flag) { text += flag ? '\1' : '\0'; }

  // Small positive and negative numbers are short.
  template <std::integral Number>
  void Take(Number& number) {
    const auto wide = static_cast<std::int64_t>(number);
    auto rest = (static_cast<std::uint64_t>(wide) << 1) ^ static_cast<std::uint64_t>(wide >> 63);
    for (; rest >> kBits != 0; rest >>= kBits) text += static_cast<char>(rest % (1U << kBits) + (1U << kBits));
    text += static_cast<char>(rest);
  }

  void Take(std::string& value) { text.append(value) += '\0'; }

  template <class Value>
  void Take(std::optional<Value>& value) {
    bool is_there = value.has_value();
    Take(is_there);
    if (is_there) Take(*value);
  }

  // One byte before each item, so that the input contains no counts that must be trusted.
  template <class Item>
  void Take(std::vector<Item>& items) {
    for (Item& item : items) {
      bool follows = true;
      Pass(*this, follows, item);
    }
    text += '\0';
  }

  template <class Struct>
  requires std::is_class_v<Struct>
  void Take(Struct& value) { Members(*this, value); }

  std::string text;
};

// --- Reading ---

struct Reader {
  void Take(bool& flag) { flag = input.Byte() % 2 == 1; }

  template <std::integral Number>
  void Take(Number& number) {
    std::uint64_t value = 0;
    for (unsigned shift = 0; shift < 64; shift += kBits) {
      const std::uint64_t byte = input.Byte();
      value |= byte % (1U << kBits) << shift;
      if (byte >> kBits == 0) break;
    }
    number = static_cast<Number>((value >> 1) ^ (~(value & 1) + 1));
  }

  void Take(std::string& value) { value = input.UpTo('\0'); }

  template <class Value>
  void Take(std::optional<Value>& value) {
    bool is_there = false;
    Take(is_there);
    value.reset();
    if (is_there) Take(value.emplace());
  }

  template <class Item>
  void Take(std::vector<Item>& items) {
    for (bool follows = false; Take(follows), follows;) Take(items.emplace_back());
  }

  template <class Struct>
  requires std::is_class_v<Struct>
  void Take(Struct& value) { Members(*this, value); }

  Input input;
};

}  // namespace

std::string BytesOf(const model::Scenario& scenario) {
  model::Scenario copy = scenario;  // decoding assigns the members that encoding reads
  Writer writer;
  writer.Take(copy);
  return std::move(writer.text);
}

model::Scenario ScenarioOf(const std::uint8_t* data, std::size_t size) {
  Reader reader{Input(data, size)};
  model::Scenario scenario;
  reader.Take(scenario);
  return scenario;
}

}  // namespace fuzz
