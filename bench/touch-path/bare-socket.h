/* The socket of the bare programs: prints its UDP port, and reads the two numbers of a touch. */
#pragma once

#include <arpa/inet.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>

static inline int openSocket(void)
{
    int fd = socket(AF_INET, SOCK_DGRAM, 0);
    int size = 4 << 20;
    struct sockaddr_in address;
    socklen_t length = sizeof address;
    memset(&address, 0, sizeof address);
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
    if (fd < 0 || bind(fd, (struct sockaddr*)&address, sizeof address) != 0)
        return -1;
    getsockname(fd, (struct sockaddr*)&address, &length);
    printf("port %d\n", ntohs(address.sin_port));
    fflush(stdout);
    return fd;
}

/* Whether that was a touch; waits for it. */
static inline int receiveTouch(int fd, double* x, double* y)
{
    char datagram[2048];
    ssize_t length = recvfrom(fd, datagram, sizeof datagram - 1, 0, NULL, NULL);
    char* rest = datagram;
    if (length < 0)
        exit(1);
    datagram[length] = '\0';
    rest = strchr(datagram, ',');
    if (!rest)
        return 0;
    *x = strtod(rest + 1, &rest) / 32767;
    *y = strtod(rest + (*rest == ','), &rest) / 32767;
    return 1;
}
