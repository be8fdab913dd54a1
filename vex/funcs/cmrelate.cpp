// @Relate(<relation>,<mode>): reads the records that belong to the feature into its attributes, or writes its
// attributes as records. The mode is DestWriteSrcRead, Write, DestReadSrcWrite or Read; the source side does the
// opposite. Rows "Relate TABLE_LOCATION, TABLE_DEF, RELATION_DEF" say where the tables are and how they belong to
// features.
#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"
#include "vex/src/vexlog.h"
#include "vex/tables/relation.h"

namespace {

constexpr VEXCommandRule kRule{.name = "Relate",
                               .count = exactly(2),
                               .onCount = 837001,
                               .onNoFeature = 837016,
                               .onConfigure = 837004,
                               .extract = VEXExtract::Own};

class VEXRelateCmd final : public VEXRuleCommand {
 public:
  VEXRelateCmd() : VEXRuleCommand(kRule) {}

  VEXStatus extract(VEXFeaturePtr& feature, const VEXStringVector& params, std::string&) override {
    VEX_TRY(test(feature, params));
    return extendStatus(run(*feature, params, true));
  }

  VEXStatus configure(const VEXStringVector& params) override {
    if (params.size() < 2) return makeStatus(837004, {joined(params, " ")});
    const std::string& word = params[1];
    if (word == "TABLE_LOCATION") return extendStatus(relations_.addLocation(params));
    if (word == "TABLE_DEF") return extendStatus(relations_.addTable(params));
    if (word == "RELATION_DEF") return extendStatus(relations_.addRelation(params));
    return makeStatus(837005, {word, "TABLE_DEF", "TABLE_LOCATION", "RELATION_DEF"});
  }

  VEXStatus closeDown() override {
    VEXStatus failure = relations_.close();
    if (failure != nullptr) logStatus(*failure);  // nobody else looks at it
    return extendStatus(std::move(failure));
  }

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    return extendStatus(run(*feature, args.texts(), false));
  }

  VEXStatus run(VEXFeature& feature, const VEXStringVector& params, bool isOpposite) {
    VEXRelation* relation = relations_.find(params[0]);
    if (relation == nullptr) return makeStatus(837002, {params[0]});
    const auto says = [&params](std::string_view mode) { return equalsIgnoringCase(params[1], mode); };
    const bool writes = says("DestWriteSrcRead") || says("Write");
    if (!writes && !says("DestReadSrcWrite") && !says("Read")) return makeStatus(837003, {params[1]});
    return extendStatus(writes != isOpposite ? relation->write(feature) : relation->read(feature));
  }

  VEXRelationSet relations_;
};

}  // namespace

VEX_COMMAND_MAKER(cmrelate, VEXRelateCmd)
