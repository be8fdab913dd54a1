// VEXWriterImp: base of every writer driver, a sink that hands out channels. Calls: setup, open, then
// getChannel and closeChannel as groups come and go; close, or abort after a failure.
#pragma once

#include <list>
#include <memory>
#include <string>

#include "vex/inc/statinfo.h"
#include "vex/src/readrimp.h"
#include "vex/src/vexchan.h"

class VEXGroup;
class VEXGrouper;
class VEXWriter;

class VEXWriterImp {
 public:
  VEXWriterImp(const std::string& type, const std::string& keyword);
  virtual ~VEXWriterImp();  // logs 882001 for the first channel that is still open and does not close
  VEXWriterImp(const VEXWriterImp&) = delete;
  VEXWriterImp& operator=(const VEXWriterImp&) = delete;

  // Which group each feature goes to: VEXSimpleGrouper, unless the driver has one stream or a hierarchy.
  virtual std::unique_ptr<VEXGrouper> createGrouper(VEXWriter& front);
  virtual VEXStatus setup();
  virtual VEXStatus writeGlobalMetaData(VEXFeature& feature) = 0;
  virtual VEXStatus open(const VEXStringVector& parameters) = 0;         // prepares the dataset
  virtual VEXStatus close();                                             // closes and destroys every channel
  virtual int maxChannels() = 0;
  // Reserves a channel: 882002 when none is left, 882003 when the driver made a bad one. The writer keeps it.
  virtual VEXStatus getChannel(VEXGroup& group, VEXChannel*& out);
  virtual VEXStatus createChannel(VEXGroup& group, std::unique_ptr<VEXChannel>& out);  // 882004 unless overridden
  virtual VEXStatus closeChannel(VEXChannel* channel);
  virtual void abort();                                                  // on every open channel

  const std::string& writerType() const { return keywords_.type(); }
  const std::string& keyword() const { return keywords_.keyword(); }
  std::size_t openChannels() const { return channels_.size(); }
  VEXStatus takeStatus() { return std::move(status_); }

 protected:
  const VEXDriverKeywords& keywords() const { return keywords_; }
  VEXStatus getDataset(std::string& dataset) const;                      // 882006
  // The dataset as a directory, created when it is not there; ends in one separator. 882005.
  VEXStatus getDatasetDir(std::string& directory) const;
  // The group's schema as the _DEF row that would have made it: keyword, feature type, then names and values.
  VEXStringVector definitionOf(const VEXGroup& group) const;

  VEXStatus status_;

 private:
  std::list<std::unique_ptr<VEXChannel>> channels_;
  VEXDriverKeywords keywords_;
};
