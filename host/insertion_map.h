// Hash tables that are walked in order of insertion; an entry that is already there keeps its value. Entries stand
// in a vector, so they move while a table grows, and an empty table takes no memory: a mesh has four of them.
#pragma once

#include "host/fnv1a.h"

#include <tsl/ordered_map.h>
#include <tsl/ordered_set.h>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

template <class Key, class Value>
using InsertionMap = tsl::ordered_map<Key, Value, Fnv1aHash, std::equal_to<>,
                                      std::allocator<std::pair<Key, Value>>, std::vector<std::pair<Key, Value>>>;

template <class Key>
using InsertionSet = tsl::ordered_set<Key, Fnv1aHash, std::equal_to<>, std::allocator<Key>, std::vector<Key>>;
