"""A certificate authority for the tests and a server certificate that it signed, made by openssl."""

import subprocess


def _openssl(*arguments):
    command = ["openssl", *[str(argument) for argument in arguments]]
    subprocess.run(command, check=True, capture_output=True, timeout=60)


def make_certificates(directory, subject_alternative_name):
    """Writes authority.pem, server.pem and server.key."""
    key = ("-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes")
    _openssl("req", "-x509", *key, "-days", 2, "-subj", "/CN=Test authority",
             "-keyout", directory / "authority.key", "-out", directory / "authority.pem")
    _openssl("req", *key, "-subj", "/CN=Test server",
             "-keyout", directory / "server.key", "-out", directory / "server.csr")
    extensions = directory / "extensions"
    extensions.write_text(f"subjectAltName={subject_alternative_name}\n")
    _openssl("x509", "-req", "-in", directory / "server.csr", "-days", 2, "-extfile", extensions,
             "-CA", directory / "authority.pem", "-CAkey", directory / "authority.key",
             "-CAcreateserial", "-out", directory / "server.pem")
