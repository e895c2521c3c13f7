# Serves a folder over explicit FTPS: pyftpdlib_tls.py PORT FOLDER USER PASSWORD PEM VERSION
import sys
from OpenSSL import SSL
from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.handlers import TLS_FTPHandler
from pyftpdlib.servers import FTPServer

port, folder, user, password, pem, version = sys.argv[1:]
authorizer = DummyAuthorizer()
authorizer.add_user(user, password, folder)
TLS_FTPHandler.authorizer = authorizer
TLS_FTPHandler.certfile = pem
TLS_FTPHandler.tls_control_required = TLS_FTPHandler.tls_data_required = True
context = TLS_FTPHandler.get_ssl_context()
only = {"1.2": SSL.TLS1_2_VERSION, "1.3": SSL.TLS1_3_VERSION}[version]
context.set_min_proto_version(only)
context.set_max_proto_version(only)
TLS_FTPHandler.ssl_context = context
FTPServer(("127.0.0.1", int(port)), TLS_FTPHandler).serve_forever()
