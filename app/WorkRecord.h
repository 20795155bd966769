/// What became of the files that were to be made of an input.
#pragma once

#include <string>
#include <vector>

namespace Kavra::App {

/// The outputs of one input, each in one of the lists, in the order in which they were met.
struct WorkRecord {
    std::vector<std::string> written;
    std::vector<std::string> kept;     ///< they were there, and were to stay
    std::vector<std::string> planned;  ///< they would be written, if anything were

    bool IsEmpty() const { return written.empty() && kept.empty() && planned.empty(); }
    void Take(const WorkRecord& other) {
        written.insert(written.end(), other.written.begin(), other.written.end());
        kept.insert(kept.end(), other.kept.begin(), other.kept.end());
        planned.insert(planned.end(), other.planned.begin(), other.planned.end());
    }
};

}  // namespace Kavra::App
