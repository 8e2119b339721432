// Hash tables that are walked in order of insertion; an entry that is already there keeps its value.
#pragma once

#include "host/fnv1a.h"

#include <tsl/ordered_map.h>
#include <tsl/ordered_set.h>

#include <functional>

template <class Key, class Value>
using InsertionMap = tsl::ordered_map<Key, Value, Fnv1aHash, std::equal_to<>>;

template <class Key>
using InsertionSet = tsl::ordered_set<Key, Fnv1aHash, std::equal_to<>>;
