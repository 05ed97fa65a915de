// The path language once more, on a tree of libxml2: what a path holds, and where it leads.
#ifndef KALV_FUZZ_PATH_MODEL_H
#define KALV_FUZZ_PATH_MODEL_H

#include "tree.h"

namespace fuzz {

struct PathModel {
    struct Segment {
        std::string name;
        long index; ///< 0-based
    };

    explicit PathModel(const std::string& path);

    bool ends_with_attribute() const { return !segments.empty() && segments.back().name[0] == '@'; }

    long status = KH_OK;
    bool absolute = false;
    std::vector<Segment> segments;
    long array_position = -1;
};

struct Place {
    long status;
    xmlNode* node;
};

/// Where a path leads from the root or the cursor; without a node where it leads nowhere.
Place go_along(const PathModel& path, xmlNode* root, xmlNode* cursor);

/// The values of all nodes that a path with an array node stands for; up to the one that cannot be read, which
/// gives the status.
struct Values {
    long status = KH_OK;
    std::vector<std::string> texts;
};
Values values_along(const PathModel& path, xmlNode* root, xmlNode* cursor);

/// The value at the end of a path, whose node has been reached.
Value value_at_end(const PathModel& path, const xmlNode* node);

} // namespace fuzz

#endif
