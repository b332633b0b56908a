// The claims of a database as relations between bits of two dumps.
//
// A group of n registers takes n - 1 comparisons, not one for every pair. The
// registers of the source are compared with the first one of the netlist, and the
// other registers of the netlist with the first one of the source.
//
// Ownership: facts outlive the claims.
#ifndef KPTDB_CLAIMS_H
#define KPTDB_CLAIMS_H

#include <array>
#include <boost/unordered/unordered_flat_set.hpp>
#include <functional>
#include <string>
#include <vector>

#include "../facts.h"
#include "../wave/vcd_names.h"
#include "../wave/vcd_reader.h"
#include "sampler.h"

namespace kptdb {

/// A bit of one of the dumps.
struct CLAIM_BIT {
  std::uint32_t followed = NO_BIT;
  bool transformed = false;
  bool inverse = false;
};

struct CODES_CLAIM {
  std::vector<CLAIM_BIT> bits;  // of the known columns, the reference side first
  std::size_t reference_bits = 0;
  boost::unordered_flat_set<std::string, TEXT_HASH, std::equal_to<>> codes;
};

enum CLAIM_KIND { SAME_CLAIM, INVERSE_CLAIM, CONSTANT_CLAIM, CODES_OF_MACHINE_CLAIM };

struct CLAIM {
  CLAIM_KIND kind = SAME_CLAIM;
  bool constant = false;
  CLAIM_BIT a;
  CLAIM_BIT b;
  std::uint32_t fact = 0;
  std::uint32_t member = 0;  // the member that the claim is about
  std::uint32_t other = 0;   // the member that it is compared with
  std::uint32_t machine = NO_BIT;

  bool is_checked = false;
  bool has_toggled = false;
  bool is_violated = false;
  std::string first_seen;
};

/// The first moment at which a claim does not hold.
struct VIOLATION {
  std::uint32_t claim;
  std::uint64_t time;       // in units of the source's dump
  std::string value;        // the value of the claim's register, or of the source's machine
  std::string other_value;  // empty for a constant
};

class CLAIMS {
 public:
  CLAIMS(const FACTS& facts, SAMPLER& reference, SAMPLER& transformed, char divider);
  /// Looks up the registers, and follows those that the dumps have.
  void plan(const VCD_NAMES& reference, const VCD_NAMES& transformed);
  /// Checks the values that have changed since the last moment.
  void check();

  const std::vector<CLAIM>& all() const { return m_claims; }
  const std::vector<VIOLATION>& violations() const { return m_violations; }
  const FACTS& facts() const { return m_facts; }
  /// The registers of both sides that no dump has, or whose name several signals have.
  std::size_t not_in_dumps() const { return m_not_found; }
  std::size_t ambiguous() const { return m_ambiguous; }

 private:
  struct FOUND_MEMBER {
    std::uint32_t member;
    CLAIM_BIT bit;
  };

  std::vector<FOUND_MEMBER> find_members(const FACT& fact, const VCD_NAMES& reference, const VCD_NAMES& transformed);
  void claim_constants(std::uint32_t fact, const std::vector<FOUND_MEMBER>& found);
  void claim_pairs(std::uint32_t fact, const std::vector<FOUND_MEMBER>& found);
  void claim_codes(std::uint32_t fact, const std::vector<FOUND_MEMBER>& found);
  void claim_pair(std::uint32_t fact, const FOUND_MEMBER& subject, const FOUND_MEMBER& other);
  void index_claims();
  void check(CLAIM& claim, std::uint32_t number);
  void check_pair(CLAIM& claim, std::uint32_t number);
  void check_codes(CLAIM& claim, std::uint32_t number);
  void violate(CLAIM& claim, std::uint32_t number, std::string value, std::string other_value);
  char value(const CLAIM_BIT& bit) const;

  const FACTS& m_facts;
  std::array<SAMPLER*, 2> m_samplers;  // reference, transformed
  char m_divider;
  std::vector<CLAIM> m_claims;
  std::vector<CODES_CLAIM> m_machines;
  std::array<std::vector<std::uint32_t>, 2> m_begin;  // by followed bit, into m_claims_of_bit
  std::array<std::vector<std::uint32_t>, 2> m_claims_of_bit;
  std::vector<bool> m_is_due;
  std::vector<std::uint32_t> m_due;
  std::vector<VIOLATION> m_violations;
  std::string m_code;
  std::size_t m_not_found = 0;
  std::size_t m_ambiguous = 0;
};

}  // namespace kptdb

#endif
