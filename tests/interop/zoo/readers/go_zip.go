// SPDX-License-Identifier: MIT

// Go's archive/zip. The protocol is that of protocol.py.
package main

import (
	"archive/zip"
	"bufio"
	"crypto/sha256"
	"fmt"
	"io"
	"os"
	"strings"
)

func item(file *zip.File) (string, error) {
	content, err := file.Open()
	if err != nil {
		return "", err
	}
	defer content.Close()
	bytes, err := io.ReadAll(content)
	if err != nil {
		return "", err
	}
	mode := file.Mode()
	if mode.IsDir() && len(bytes) == 0 {
		return fmt.Sprintf("d %x", file.Name), nil
	}
	if !mode.IsRegular() {
		return fmt.Sprintf("l %x", file.Name), nil
	}
	return fmt.Sprintf("f %x %d %x", file.Name, len(bytes), sha256.Sum256(bytes)), nil
}

func items(path string) ([]string, error) {
	archive, err := zip.OpenReader(path)
	if err != nil {
		return nil, err
	}
	defer archive.Close()
	var lines []string
	for _, file := range archive.File {
		line, err := item(file)
		if err != nil {
			return nil, err
		}
		lines = append(lines, line)
	}
	return lines, nil
}

func main() {
	paths := bufio.NewScanner(os.Stdin)
	for paths.Scan() {
		lines, err := items(paths.Text())
		last := "."
		if err != nil {
			last = fmt.Sprintf("! %+q", err.Error())
		}
		lines = append(append([]string{"= " + paths.Text()}, lines...), last)
		fmt.Println(strings.Join(lines, "\n"))
	}
}
