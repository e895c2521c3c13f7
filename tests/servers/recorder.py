# A SOCKS 4 proxy that keeps what passes through it, to show what a listener on the way could read.
# recorder.py serve PORT FOLDER           keeps each direction of each connection in a file of its own in FOLDER
# recorder.py search FOLDER SITE WORD...  looks there for the words, and for the names and contents of the files of SITE,
#                                         in pieces of 8 bytes; prints how many were found, and how many there are
import os, socket, struct, sys, threading

PIECE = 8


def pass_on(source, target, kept):
    try:
        with open(kept, "wb", 0) as file:
            while data := source.recv(65536):
                file.write(data)
                target.sendall(data)
    except OSError:
        pass
    for end, how in ((target, socket.SHUT_WR), (source, socket.SHUT_RD)):
        try:
            end.shutdown(how)
        except OSError:
            pass


def carry(client, folder, number):
    with client, client.makefile("rb", 0) as request:
        version, command, port, address = struct.unpack(">BBH4s", request.read(8))
        while request.read(1) not in (b"\0", b""):   # the user's name
            pass
        host = socket.inet_ntoa(address)
        print(f"connection {number} to {host}:{port}", flush=True)
        if (version, command) != (4, 1):
            return client.sendall(b"\0\x5b" + bytes(6))
        with socket.create_connection((host, port)) as server:
            client.sendall(b"\0\x5a" + bytes(6))
            up = threading.Thread(target=pass_on, args=(client, server, f"{folder}/{number}.up"))
            up.start()
            pass_on(server, client, f"{folder}/{number}.down")
            up.join()


def serve(port, folder):
    os.makedirs(folder)
    with socket.create_server(("127.0.0.1", int(port)), backlog=16) as listener:
        number = 0
        while True:
            client, number = listener.accept()[0], number + 1
            threading.Thread(target=carry, args=(client, folder, number), daemon=True).start()


def contents(folder):
    for path, _, files in os.walk(folder):
        for name in files:
            with open(os.path.join(path, name), "rb") as file:
                # A text file's line ends may change on the way.
                yield name, file.read().replace(b"\r", b"")


def search(recorded, site, *words):
    pieces = set()
    for name, content in contents(site):
        words += (name,)
        pieces.update(content[at:at + PIECE] for at in range(0, len(content) - PIECE + 1, PIECE))
    words = {word.encode() for word in words}
    found = set()
    for _, passed in contents(recorded):
        found.update(word for word in words if word in passed)
        found.update(pieces.intersection(passed[at:at + PIECE] for at in range(len(passed) - PIECE + 1)))
    print(len(found), len(words | pieces))


{"serve": serve, "search": search}[sys.argv[1]](*sys.argv[2:])
