#include "vex/tables/filetab.h"

#include "vex/src/platform/platform.h"
#include "vex/src/vexconf.h"
#include "vex/tables/catin.h"
#include "vex/tables/catout.h"
#include "vex/tables/dbfin.h"
#include "vex/tables/dbfout.h"
#include "vex/tables/dbtable.h"
#include "vex/tables/scatin.h"
#include "vex/tables/scatout.h"
#include "vex/tables/sepvalin.h"
#include "vex/tables/sepvalot.h"
#include "vex/tables/sqlldrot.h"
#include "vex/tables/strascin.h"
#include "vex/tables/strascot.h"

namespace {

template <class Base, class Table>
std::unique_ptr<Base> make(std::string_view path) {
  return std::make_unique<Table>(path);
}

// A new kind of table file is one row.
constexpr VEXTableKind kKinds[] = {
    {"CSV", &make<VEXTableInput, VEXSeparatedInput>, &make<VEXTableOutput, VEXSeparatedOutput>},
    {"DBF", &make<VEXTableInput, VEXDBFInput>, &make<VEXTableOutput, VEXDBFOutput>},
    {"CAT", &make<VEXTableInput, VEXCatalogueInput>, &make<VEXTableOutput, VEXCatalogueOutput>},
    {"SCAT", &make<VEXTableInput, VEXStructuredInput>, &make<VEXTableOutput, VEXStructuredOutput>},
    {"SCGEOMETRY", &make<VEXTableInput, VEXFixedAsciiInput>, &make<VEXTableOutput, VEXFixedAsciiOutput>},
    {"SQLLDR", nullptr, &make<VEXTableOutput, VEXBulkLoaderOutput>},
    {"DATABASE", &make<VEXTableInput, VEXDatabaseInput>, &make<VEXTableOutput, VEXDatabaseOutput>},
};

}  // namespace

bool VEXTableDefinition::parse(const VEXStringVector& row, VEXTableDefinition& definition) {
  if (row.size() < 4 || row.size() % 2 != 0) return false;
  definition.featureType = row[1];
  definition.kindName = row[2];
  definition.fileName = row[3];
  definition.fields.clear();
  for (std::size_t i = 4; i < row.size(); i += 2) definition.fields.emplace_back(row[i], row[i + 1]);
  return true;
}

const VEXTableKind* findTableKind(std::string_view name) {
  for (const VEXTableKind& kind : kKinds)
    if (kind.name == name) return &kind;
  return nullptr;
}

std::string tableKindNames() {
  std::string names;
  for (const VEXTableKind& kind : kKinds) names.append(names.empty() ? "" : ", ").append(kind.name);
  return names;
}

std::string tablePath(std::string_view directory, std::string_view fileName) {
  const std::string name = VEXConfiguration::normalisePath(fileName);
  if (platform::isAbsolutePath(name)) return name;
  std::string path(directory);
  if (!path.empty() && !platform::isSeparator(path.back())) path += '/';
  return path + name;
}
