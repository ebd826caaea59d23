#include "sample_report.h"

#include "read_source.h"

namespace report_test {
namespace {

using korvel::Changes;
using korvel::Edit;
using korvel::EditKind;
using korvel::EditStatus;
using korvel::FileNote;
using korvel::Finding;
using korvel::Location;
using korvel::Source;
using korvel::Status;
using korvel::TableResult;
using Kind = qmx::ElementId::Kind;

constexpr char kOld[] = R"(<metalib name="mall" version="5" protocol="QMX">
  <meta name="item">
    <entry name="price" type="uint64"/>
  </meta>
  <meta name="orders">
    <entry name="uid" type="uint32"/>
    <entry name="gone" type="uint8"/>
    <entry name="zone" type="uint32"/>
    <entry name="items" type="item" count="4"/>
    <primarykey entries="uid"/>
  </meta>
  <meta name="carts">
    <entry name="uid" type="uint32"/>
    <entry name="items" type="item" count="4"/>
    <primarykey entries="uid"/>
  </meta>
  <meta name="users"><entry name="uid" type="uint32"/><entry name="mail" type="uint8" count="2"/><primarykey entries="uid"/></meta>
  <meta name="zones"><entry name="uid" type="uint32"/><primarykey entries="uid"/></meta>
  <meta name="logs"><entry name="uid" type="uint32"/><primarykey entries="uid"/></meta>
  <meta name="old_style"><entry name="uid" type="uint32"/><entry name="a-b" type="uint32"/><primarykey entries="uid"/></meta>
</metalib>
)";

constexpr char kNew[] = R"(<metalib name="mall" version="6" protocol="QMX">
  <meta name="item">
    <entry name="price" type="uint32"/>
  </meta>
  <meta name="orders">
    <entry name="uid" type="uint64"/>
    <entry name="zone" type="uint32" count="2"/>
    <entry name="items" type="item" count="4"/>
    <entry name="note" type="uint8" version="6"/>
    <primarykey entries="uid"/>
  </meta>
  <meta name="carts">
    <entry name="uid" type="uint32"/>
    <entry name="items" type="item" count="4"/>
    <primarykey entries="uid"/>
  </meta>
  <meta name="users"><entry name="uid" type="uint32"/><entry name="mail" type="uint8" count="3"/><primarykey entries="uid"/></meta>
  <meta name="logs"><entry name="uid" type="uint32"/><primarykey entries="uid"/></meta>
  <meta name="old_style"><entry name="uid" type="uint32"/><entry name="a-b" type="uint32"/><primarykey entries="uid"/></meta>
  <meta name="notes"><entry name="uid" type="uint32"/><primarykey entries="uid"/></meta>
</metalib>
)";

// The position of a meta in the old and the new source.
constexpr std::uint32_t kItem = 0, kOrders = 1, kCarts = 2, kUsers = 3, kOldZones = 4, kOldLogs = 5, kNewLogs = 4, kOldStyle = 6,
                        kNewStyle = 5, kNotes = 6;

class Maker {
 public:
  explicit Maker(const std::string& suffix) : suffix_(suffix) {
    sample_.old_source = std::make_unique<Source>(ReadSource("old" + suffix + ".xml", kOld));
    sample_.new_source = std::make_unique<Source>(ReadSource("new" + suffix + ".xml", kNew));
    sample_.report.command = "check";
    sample_.report.path_prefix = "";
    sample_.report.inputs = {{"old", sample_.old_source.get()}, {"new", sample_.new_source.get()}};
  }

  TableResult Table(const std::string& name, Status status, std::uint32_t old_meta, std::uint32_t new_meta) const {
    TableResult table;
    table.table = name + suffix_;
    table.status = status;
    table.first = sample_.old_source.get();
    table.second = sample_.new_source.get();
    table.declared = InNew({Kind::kMeta, new_meta}, "");
    if (status == Status::kNew) table.first = nullptr;
    static_cast<void>(old_meta);
    return table;
  }

  Location InOld(qmx::ElementId element, std::string_view attribute) const {
    return {sample_.old_source.get(), element, attribute};
  }
  Location InNew(qmx::ElementId element, std::string_view attribute) const {
    return {sample_.new_source.get(), element, attribute};
  }

  Edit MakeEdit(EditKind kind, const std::string& meta, const std::string& item, const std::string& before,
                const std::string& after, Location old_location, Location new_location) const {
    const std::string path = meta == "item" ? "orders.items[].price" : meta + "." + item;
    return {kind, meta + suffix_, item + suffix_, before, after, {path + suffix_}, 1, old_location, new_location};
  }

  // A finding for some edits, located at the first of them.
  Finding MakeFinding(const Changes& changes, std::vector<std::size_t> edits, int code, const std::string& rule,
                      const std::string& text, const std::string& suggestion, const std::string& fingerprint) const {
    Finding finding;
    const Edit& first = changes.edits[edits.front()];
    finding.edits = std::move(edits);
    finding.verdict = {code, text + suffix_, rule};
    finding.path = first.paths.front();
    finding.old_location = first.old_location;
    finding.new_location = first.new_location;
    finding.suggestion = suggestion + suffix_;
    finding.fingerprint = fingerprint;
    return finding;
  }

  Sample& sample() { return sample_; }
  const std::string& suffix() const { return suffix_; }

 private:
  Sample sample_;
  std::string suffix_;
};

void Answer(TableResult& table) {
  const Finding& first = table.changes->findings.front();
  table.verdict.code = first.verdict.code;
  table.verdict.rule = first.verdict.rule;
  table.verdict.text = first.verdict.text;
}

constexpr char kSmaller[] = "The size of entry can't be reduced! entry:'price' metaname:'item'";

Edit SmallerPrice(const Maker& maker, const std::string& path) {
  const qmx::ElementId price{Kind::kEntry, kItem, 0};
  Edit edit = maker.MakeEdit(EditKind::kEntryType, "item", "price", "uint64", "uint32", maker.InOld(price, "type"),
                             maker.InNew(price, "type"));
  edit.paths = {path + maker.suffix()};
  return edit;
}

TableResult Orders(const Maker& maker) {
  TableResult table = maker.Table("orders", Status::kRefused, kOrders, kOrders);
  Changes& changes = table.changes.emplace();
  const auto old_entry = [&](std::uint32_t i, const char* attribute) {
    return maker.InOld({Kind::kEntry, kOrders, i}, attribute);
  };
  const auto new_entry = [&](std::uint32_t i, const char* attribute) {
    return maker.InNew({Kind::kEntry, kOrders, i}, attribute);
  };
  changes.edits = {
      maker.MakeEdit(EditKind::kEntryType, "orders", "uid", "uint32", "uint64", old_entry(0, "type"), new_entry(0, "type")),
      maker.MakeEdit(EditKind::kEntryRemoved, "orders", "gone", "", "", old_entry(1, ""),
                     maker.InNew({Kind::kMeta, kOrders}, "")),
      maker.MakeEdit(EditKind::kEntryCount, "orders", "zone", "1", "2", old_entry(2, ""), new_entry(1, "count")),
      maker.MakeEdit(EditKind::kEntryAdded, "orders", "note", "", "", {}, new_entry(3, "")),
      SmallerPrice(maker, "orders.items[].price"),
      maker.MakeEdit(EditKind::kEntryMoved, "orders", "items", "", "", old_entry(3, ""), new_entry(2, "")),
      maker.MakeEdit(EditKind::kEntryMoved, "orders", "zone", "", "", old_entry(2, ""), new_entry(1, "")),
  };
  changes.status = {EditStatus::kRefused, EditStatus::kRefused, EditStatus::kRefused,   EditStatus::kAllowed,
                    EditStatus::kRefused, EditStatus::kBlocked, EditStatus::kNotChecked};
  changes.stopped = true;
  changes.findings = {
      maker.MakeFinding(changes, {0}, -3, "primary-key.size",
                        "The size of primarykey can't be modified! entry:'uid' metaname:'orders'",
                        "keep uid at 4 bytes; add a new entry with a version above 5 for the wider value", "0000000000000001"),
      maker.MakeFinding(changes, {1, 2}, -3, "field.missing", "The entry can't be found! entry_name:'gone' metaname:'orders'",
                        "keep gone", "0000000000000002"),
      maker.MakeFinding(changes, {4}, -3, "field.size", kSmaller, "keep price at 8 bytes", "0000000000000003"),
  };
  changes.findings[0].has_fix = true;
  const std::string_view bytes = maker.InNew({}, "").source->text->Bytes();
  const std::size_t wide = bytes.find("uint64");
  changes.findings[0].fix = {{{wide, wide + 6}, "uint32" + maker.suffix()}};
  Answer(table);
  return table;
}

TableResult Carts(const Maker& maker) {
  TableResult table = maker.Table("carts", Status::kRefused, kCarts, kCarts);
  Changes& changes = table.changes.emplace();
  changes.edits = {SmallerPrice(maker, "carts.items[].price")};
  changes.status = {EditStatus::kRefused};
  changes.findings = {maker.MakeFinding(changes, {0}, -3, "field.size", kSmaller, "keep price at 8 bytes", "0000000000000003")};
  Answer(table);
  return table;
}

TableResult Users(const Maker& maker) {
  TableResult table = maker.Table("users", Status::kRefused, kUsers, kUsers);
  Changes& changes = table.changes.emplace();
  const qmx::ElementId mail{Kind::kEntry, kUsers, 1};
  changes.edits = {
      maker.MakeEdit(EditKind::kEntryCount, "users", "mail", "2", "3", maker.InOld(mail, "count"), maker.InNew(mail, "count"))};
  changes.status = {EditStatus::kRefused};
  changes.findings = {
      maker.MakeFinding(changes, {0}, -3, "field.count", "The count of entry can't be modified", "keep 2", "0000000000000004")};
  changes.findings[0].waiver = {"nobody has mail" + maker.suffix(), "2030-01-31", true};
  Answer(table);
  return table;
}

TableResult Zones(const Maker& maker) {
  TableResult table = maker.Table("zones", Status::kRefused, kOldZones, 0);
  table.removed = true;
  table.declared = maker.InOld({Kind::kMeta, kOldZones}, "");
  Finding finding;
  finding.verdict = {-2, "Get meta info failed, please check the table name ! table:'zones" + maker.suffix() + "'",
                     "library.table"};
  finding.path = "zones" + maker.suffix();
  finding.old_location = table.declared;
  finding.new_location = maker.InNew({Kind::kMetalib}, "");
  finding.suggestion = "no allowed alternative";
  finding.fingerprint = "0000000000000005";
  table.changes.emplace().findings = {finding};
  Answer(table);
  return table;
}

TableResult OldStyle(const Maker& maker) {
  TableResult table = maker.Table("old_style", Status::kRefused, kOldStyle, kNewStyle);
  Finding finding;
  finding.verdict = {-18, "field name[a-b] has illegal character." + maker.suffix(), "field-name.character"};
  finding.path = "old_style.a-b" + maker.suffix();
  finding.old_location = maker.InOld({Kind::kEntry, kOldStyle, 1}, "name");
  finding.new_location = maker.InNew({Kind::kEntry, kNewStyle, 1}, "name");
  finding.suggestion = "no allowed alternative";
  finding.fingerprint = "0000000000000006";
  table.changes.emplace().findings = {finding};
  table.changes->allowed_together = finding.verdict;
  table.changes->stopped = true;
  Answer(table);
  // The main check has another text.
  table.verdict.rule = "field-name.invalid";
  table.verdict.text = "CheckFieldNameValidate failed! table:'old_style" + maker.suffix() + "'";
  return table;
}

}  // namespace

Sample EverythingReport(const std::string& suffix) {
  Maker maker(suffix);
  korvel::Report& report = maker.sample().report;
  report.tables = {Orders(maker),
                   Carts(maker),
                   Users(maker),
                   Zones(maker),
                   maker.Table("logs", Status::kAllowed, kOldLogs, kNewLogs),
                   OldStyle(maker),
                   maker.Table("notes", Status::kNew, 0, kNotes)};
  report.files = {{FileNote::Kind::kAdded, "", "added" + suffix + ".xml"},
                  {FileNote::Kind::kDeleted, "deleted" + suffix + ".xml", ""},
                  {FileNote::Kind::kMoved, "from" + suffix + ".xml", "to" + suffix + ".xml"}};
  report.project = {
      {"waiver.expired", "korvelcheck" + suffix + ".toml", {3, 1}, "the waiver expired on 2026-01-01" + suffix, "remove it"},
      {"waiver.unused",
       "korvelcheck" + suffix + ".toml",
       {9, 1},
       "the waiver matches no finding" + suffix,
       "replace it with these lines\n[[waivers]]\nrule = \"field.count\"",
       korvel::ProjectFinding::Level::kWarning}};
  return std::move(maker.sample());
}

Sample FaultReport(const std::string& suffix) {
  using korvel::FaultAt;
  using korvel::FaultKind;
  Maker maker(suffix);
  korvel::Report& report = maker.sample().report;
  report.tables = {maker.Table("logs", Status::kAllowed, kOldLogs, kNewLogs)};
  const auto file = [&](const std::string& name) { return "faults/" + name + suffix; };
  report.faults = {
      FaultAt(FaultKind::kSyntax, file("syntax.xml"), 3, 7, "an end tag" + suffix + "; allowed: the end tag of the open element"),
      FaultAt(FaultKind::kInvalid, "git:v1:./" + file("old.xml"), 2, 5, "unknown element 'mta'" + suffix + "; allowed: meta"),
      korvel::FaultIn(FaultKind::kImage, file("image.qmb"), "header: magic at byte 0 is 7" + suffix),
      korvel::FaultAbout(FaultKind::kNoTable, file("none.xml"), "no table (a meta with a primary key)"),
      korvel::FaultAbout(FaultKind::kUnreadable, file("missing.xml"), "No such file or directory"),
      {.text = "git:v2: unknown revision 'v2'" + suffix, .message = "korvelcheck: git:v2: unknown revision 'v2'"}};
  report.faults[1].needed_by = file("new.xml");
  return std::move(maker.sample());
}

Sample AllowedReport() {
  Maker maker("");
  maker.sample().report.tables = {maker.Table("carts", Status::kAllowed, kCarts, kCarts),
                                  maker.Table("logs", Status::kAllowed, kOldLogs, kNewLogs)};
  return std::move(maker.sample());
}

}  // namespace report_test
