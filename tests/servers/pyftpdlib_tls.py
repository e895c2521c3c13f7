# Serves a folder over explicit FTPS: pyftpdlib_tls.py PORT FOLDER USER PASSWORD PEM
import sys
from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.handlers import TLS_FTPHandler
from pyftpdlib.servers import FTPServer

port, folder, user, password, pem = sys.argv[1:]
authorizer = DummyAuthorizer()
authorizer.add_user(user, password, folder)
TLS_FTPHandler.authorizer = authorizer
TLS_FTPHandler.certfile = pem
TLS_FTPHandler.tls_control_required = TLS_FTPHandler.tls_data_required = True
FTPServer(("127.0.0.1", int(port)), TLS_FTPHandler).serve_forever()
