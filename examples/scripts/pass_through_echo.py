# Takes the requests that the service hands to this script, prints them, and sends each of them back as it came.
#
# It is a beginning for a script that answers requests itself: change answer().

import time

import orbClient

CONNECTION = "local"
SCRIPT_NAME = "echo"  # under which the service knows this script
DURATION = 60.0  # s, after which the script ends
INTERVAL = 0.2  # s, from one look for requests to the next


def find_connection():
    connection = orbClient.findConnection(CONNECTION)
    if connection == "error":
        names = ", ".join(str(other) for other in orbClient.getConnections())
        raise RuntimeError(f"There is no open connection \"{CONNECTION}\". Open are: {names or 'none'}.")
    return connection


def answer(request):
    reply = orbClient.dataFrame()
    reply.connection = request.connection
    reply.line = request.line
    reply.address = request.address
    reply.channel = request.channel
    reply.command = request.command
    reply.item = request.item
    # A request without a plain value has a dictionary in its place, whose numbers are lost; its own text has them all.
    reply.value = request.rawJson if isinstance(request.value, dict) else request.value
    reply.unit = request.unit
    return reply


# Returns how many requests there were.
def echo_waiting(connection):
    requests = connection.getPassThroughMessageList()
    for request in requests:
        print(f"{request.line}.{request.address}.{request.channel} {request}")
    replies = [answer(request) for request in requests]
    if replies and connection.sendMessageList(replies) != "ok":
        raise RuntimeError(f"{len(replies)} answers could not be sent to connection \"{connection}\".")
    return len(replies)


def echo(connection):
    if connection.activateDataPassThrough(SCRIPT_NAME) != "ok":
        raise RuntimeError(f"Connection \"{connection}\" does not hand requests to scripts.")
    print(f"Waiting for requests on connection \"{connection}\" for {DURATION:g} s.")
    echoed = 0
    end = time.monotonic() + DURATION
    while time.monotonic() < end:
        echoed += echo_waiting(connection)
        # No requests and no connection look alike in the list.
        if connection.getStatusHeartBeat() == "error":
            raise RuntimeError(f"Connection \"{connection}\" is gone, after {echoed} requests.")
        time.sleep(INTERVAL)
    print(f"{echoed} requests were echoed.")


echo(find_connection())
