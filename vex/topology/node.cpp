#include "vex/topology/node.h"

#include "vex/inc/numtext.h"

VEXStatus VEXTopologyNode::positionOf(const VEXArcEnd& wanted, std::size_t& at) const {
  for (at = 0; at < ends_.size(); ++at)
    if (end(at).arc == wanted.arc && end(at).isStart == wanted.isStart) return nullptr;
  return makeStatus(323007, {integerText(wanted.arc), integerText(id_)});
}
