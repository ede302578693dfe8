// The base of persisted sub-objects: list entries that an action stores with its properties.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace wren {

/// The stored form of one sub-object: ordered name/value pairs.
using TKorXMLState = std::vector<std::pair<std::string, std::string>>;

/// A persisted sub-object with an identity inside its owner's stored form.
class TKorXMLObject {
 public:
  virtual ~TKorXMLObject() = default;
  virtual void ReadState(const TKorXMLState& state) = 0;
  virtual void WriteState(TKorXMLState& state) const = 0;
  void SetObjectID(int id) { objectID_ = id; }
  int ObjectID() const { return objectID_; }
  void ResetXMLID() { objectID_ = -1; }

 private:
  int objectID_ = -1;
};

}  // namespace wren
