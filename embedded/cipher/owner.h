#ifndef VANTREL_EMBEDDED_CIPHER_OWNER_H
#define VANTREL_EMBEDDED_CIPHER_OWNER_H

#include "embedded/cipher/cryptography.h"

namespace vantrel::embedded {

inline constexpr size_t longestOwnerName = 24;

struct OwnerMode {
    bool isReadable = false;  // by those who do not give the name
    bool isEncrypted = false;
};

struct NewOwner {
    ByteView name;
    OwnerMode mode;
};

enum class Access : uint8_t { full, reading };

// Tells an owner's name from others without keeping it.
class NameVerifier {
  public:
    static NameVerifier of(ByteView name);
    // Ill-formed bytes are thrown as an input/output error.
    static NameVerifier parse(ByteView bytes);

    bool accepts(ByteView name) const;
    const Bytes &bytes() const { return bytes_; }

  private:
    explicit NameVerifier(Bytes bytes) : bytes_(std::move(bytes)) {}

    Bytes bytes_;  // cost, salt, derived key
};

// A name that could be an owner's.
inline bool isOwnerName(ByteView name) {
    return !name.empty() && name.size() <= longestOwnerName;
}

}  // namespace vantrel::embedded

#endif
