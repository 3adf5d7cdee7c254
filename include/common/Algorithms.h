#pragma once

#include <algorithm>
#include <functional>
#include <iterator>
#include <list>
#include <type_traits>

// Helpers for a std::list that its owner keeps sorted. They take no lock: the owner of the list does.

// Inserts `element` behind every element that does not order after it, so that equals keep their order of arrival.
template <class T>
typename std::list<T>::iterator insert_sorted(
  std::list<T>& list, const T& element, const std::type_identity_t<std::function<bool(const T&, const T&)>>& less) {
  return list.insert(std::upper_bound(list.begin(), list.end(), element, less), element);
}

// Finds the last element that equals `key`, or end().
// `compare(key, element)` is the three-way comparison of the element's name against the key: above 0 when the
// element orders after the key, 0 when they are equal. Call it qualified; std:: has a function of the same name.
template <class T, class K>
typename std::list<T>::iterator binary_search(
  std::list<T>& list, const K& key, const std::type_identity_t<std::function<int(const K&, const T&)>>& compare) {
  if (list.empty()) return list.end();
  auto found = std::upper_bound(list.begin(), list.end(), key,
                                [&compare](const K& k, const T& element) { return compare(k, element) > 0; });
  if (found == list.begin()) return list.end();
  --found;
  return compare(key, *found) == 0 ? found : list.end();
}

// The same by the element type's own order (operator< both ways between key and element).
template <class T, class K>
typename std::list<T>::iterator binary_search(std::list<T>& list, const K& key) {
  return ::binary_search(list, key, [](const K& k, const T& element) {
    return k < element ? 1 : element < k ? -1 : 0;
  });
}
