#include "vex/topology/arc.h"

#include "vex/inc/numtext.h"
#include "vex/src/vexline.h"

VEXStatus VEXTopologyArc::otherNode(std::int32_t node, std::int32_t& other) const {
  if (node != startNode_ && node != endNode_) return makeStatus(319001, {integerText(node), integerText(id_)});
  other = node == startNode_ ? endNode_ : startNode_;
  return nullptr;
}

VEXLine VEXTopologyArc::line() const {
  std::vector<double> x(xs_.begin(), xs_.end());
  std::vector<double> y(ys_.begin(), ys_.end());
  if (zs_.empty()) return VEXLine(std::move(x), std::move(y), VEX_GEOM_LINE);
  return VEXLine(std::move(x), std::move(y), std::vector<double>(zs_.begin(), zs_.end()), VEX_GEOM_LINE);
}
