// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A certificate authority for one test, and what it certifies.
#pragma once

#include <memory>
#include <string>

namespace sorakaze::test {

struct Certificate {
    std::string certificate;  ///< PEM
    std::string key;          ///< PEM
};

class CertificateAuthority {
  public:
    CertificateAuthority();
    ~CertificateAuthority();
    CertificateAuthority(const CertificateAuthority&) = delete;
    CertificateAuthority& operator=(const CertificateAuthority&) = delete;

    std::string Pem() const;
    /// For `host`, from a day ago to `days` from now.
    Certificate Certify(const std::string& host, int days = 1) const;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sorakaze::test
