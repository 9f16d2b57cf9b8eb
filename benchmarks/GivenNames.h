#pragma once

#include <QString>
#include <vector>

namespace bench {

/// Names as people give them: 10 to 60 characters in mixed case, with digits and signs, some not in ASCII.
/// Always the same for the same count; no two are equal when letter case and leading zeros are ignored. Every
/// hundredth contains "kestrel" in some letter case, and every second of these "kestrel blue".
std::vector<QString> MakeGivenNames(int count);

}  // namespace bench
