#include "vex/tables/vextabio.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "vex/src/platform/platform.h"
#include "vex/src/vexconf.h"

VEXTableInput::VEXTableInput(std::string_view path) : path_(VEXConfiguration::normalisePath(path)) {}

VEXTableInput::~VEXTableInput() = default;

bool VEXTableInput::hasColumn(std::string_view name) const {
  return std::find(columnNames_.begin(), columnNames_.end(), name) != columnNames_.end();
}

VEXTableOutput::VEXTableOutput(std::string_view path) : path_(VEXConfiguration::normalisePath(path)) {}

VEXTableOutput::~VEXTableOutput() = default;

bool VEXTableOutput::hasColumn(std::string_view name) const {
  return std::find(columnNames_.begin(), columnNames_.end(), name) != columnNames_.end();
}

VEXStatus VEXTableOutput::finish(std::uint32_t onFailure) {
  if (!file_.failed() && file_.close()) return nullptr;
  const std::string reason = file_.errorText();
  abort();
  return makeStatus(onFailure, {path_, reason});
}

void VEXTableOutput::abort() {
  if (!file_.isOpen()) return;
  file_.close();
  std::error_code ignored;
  if (std::filesystem::is_regular_file(path_, ignored)) platform::removeFile(path_);
}
