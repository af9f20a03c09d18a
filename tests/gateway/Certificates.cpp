// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/gateway/Certificates.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <stdexcept>

namespace sorakaze::test {
namespace {

template <auto Free>
struct Frees {
    template <typename T>
    void operator()(T* object) const {
        Free(object);
    }
};
using Key = std::unique_ptr<EVP_PKEY, Frees<&EVP_PKEY_free>>;
using X509Pointer = std::unique_ptr<X509, Frees<&X509_free>>;

template <typename Write>
std::string Pem(Write write) {
    const std::unique_ptr<BIO, Frees<&BIO_free_all>> bio(BIO_new(BIO_s_mem()));
    write(bio.get());
    char* data = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &data);
    return {data, static_cast<std::size_t>(size)};
}

void Extend(X509* certificate, X509* issuer, int extension, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const std::unique_ptr<X509_EXTENSION, Frees<&X509_EXTENSION_free>> made(
        X509V3_EXT_conf_nid(nullptr, &context, extension, value.c_str()));
    X509_add_ext(certificate, made.get(), -1);
}

X509Pointer Make(EVP_PKEY* key, const std::string& name, int days, X509* issuer, EVP_PKEY* issuerKey) {
    static long serial = 0;
    X509Pointer made(X509_new());
    X509_set_version(made.get(), 2);
    ASN1_INTEGER_set(X509_get_serialNumber(made.get()), ++serial);
    constexpr long kDay = 24 * 60 * 60;
    X509_gmtime_adj(X509_getm_notBefore(made.get()), -2 * kDay);
    X509_gmtime_adj(X509_getm_notAfter(made.get()), days * kDay);
    X509_set_pubkey(made.get(), key);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(made.get()), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0);
    X509* signer = issuer ? issuer : made.get();
    X509_set_issuer_name(made.get(), X509_get_subject_name(signer));
    Extend(made.get(), signer, NID_basic_constraints, issuer ? "critical,CA:FALSE" : "critical,CA:TRUE");
    if (issuer) Extend(made.get(), signer, NID_subject_alt_name, "DNS:" + name);
    if (X509_sign(made.get(), issuerKey, EVP_sha256()) == 0) throw std::runtime_error("no certificate");
    return made;
}

}  // namespace

struct CertificateAuthority::Impl {
    Key key{EVP_EC_gen("P-256")};
    X509Pointer certificate = Make(key.get(), "An authority", 1, nullptr, key.get());
};

CertificateAuthority::CertificateAuthority() : impl_(std::make_unique<Impl>()) {}
CertificateAuthority::~CertificateAuthority() = default;

std::string CertificateAuthority::Pem() const {
    return test::Pem([&](BIO* bio) { PEM_write_bio_X509(bio, impl_->certificate.get()); });
}

Certificate CertificateAuthority::Certify(const std::string& host, int days) const {
    const Key key(EVP_EC_gen("P-256"));
    const X509Pointer made = Make(key.get(), host, days, impl_->certificate.get(), impl_->key.get());
    return {test::Pem([&](BIO* bio) { PEM_write_bio_X509(bio, made.get()); }), test::Pem([&](BIO* bio) {
                PEM_write_bio_PrivateKey(bio, key.get(), nullptr, nullptr, 0, nullptr, nullptr);
            })};
}

}  // namespace sorakaze::test
