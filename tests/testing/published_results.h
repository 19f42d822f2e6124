// What applications get for an internal result.
#ifndef QUILLONID_TESTS_TESTING_PUBLISHED_RESULTS_H
#define QUILLONID_TESTS_TESTING_PUBLISHED_RESULTS_H

#include <map>

// Internal code, published code.
inline const std::map<int, int> kPublished = {
    {-50,   -1  },
    {-55,   -2  },
    {-54,   -3  },
    {-4,    -4  },
    {-56,   -5  },
    {-2000, -7  },
    {-57,   -9  },
    {-2,    -13 },
    {-2001, -8  },
    {-2004, -11 },
    {-2003, -10 },
    {-2005, -100},
    {-2002, -12 },
};

// Other negative codes are published as -100, the rest stays.
inline int PublishedResult(int code) {
  const auto pair = kPublished.find(code);
  return pair != kPublished.end() ? pair->second : code < 0 ? -100 : code;
}

#endif
