// Sessions that together call every public function, in the ways that allocate.
#ifndef KALV_TORTURE_WORKLOAD_H
#define KALV_TORTURE_WORKLOAD_H

#include "torture/session.h"

#include <functional>
#include <string>
#include <vector>

namespace torture {

struct Scenario {
    std::string name;
    std::function<void(Session& session, const support::TemporaryFolder& folder)> run;
};

std::vector<Scenario> scenarios();

/// Writes the files that the scenarios read.
void write_files(const support::TemporaryFolder& folder);

} // namespace torture

#endif
